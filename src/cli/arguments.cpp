// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/arguments.h"

#include "cli/command_error.h"
#include "cli/text.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <list>

namespace cli {

using foundation::Result;

namespace {

/// A command as the parser knows it, to be asked what it took.
struct DeclaredCommand {
    const CommandDescription *description = nullptr;
    CLI::App *app = nullptr;
    std::vector<CLI::Option *> operands;
    std::vector<std::pair<std::string_view, CLI::Option *>> options;
};

// Values are taken as they were typed (`results`): converted ones give braces and brackets a meaning of their own.
using Typed = std::vector<std::string>;

DeclaredCommand declare(CLI::App &parser, const CommandDescription &description, std::list<Typed> &sinks)
{
    DeclaredCommand command{
        &description, parser.add_subcommand(std::string(description.name), std::string(description.summary)), {}, {}};
    for (const OperandDescription &operand : description.operands) {
        CLI::Option *option
            = command.app->add_option(std::string(operand.name), sinks.emplace_back(), std::string(operand.help));
        option->required(operand.isRequired)->type_name("");
        if (operand.repeats)
            option->expected(operand.isRequired ? 1 : 0, CLI::detail::expected_max_vector_size);
        else
            option->expected(1)->allow_extra_args(false);
        command.operands.push_back(option);
    }
    for (const OptionDescription &described : description.options) {
        const std::string name = "--" + std::string(described.name);
        const std::string help(described.help);
        CLI::Option *option = nullptr;
        if (described.placeholder.empty()) {
            option = command.app->add_flag(name, help);
        } else {
            option = command.app->add_option(name, sinks.emplace_back(), help);
            option->expected(1)->allow_extra_args(false)->type_name(std::string(described.placeholder));
            option->multi_option_policy(
                described.repeats ? CLI::MultiOptionPolicy::TakeAll : CLI::MultiOptionPolicy::Throw);
        }
        command.options.emplace_back(described.name, option);
    }
    return command;
}

std::string sentence(std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    while (text.ends_with(' '))
        text.pop_back();
    return text.ends_with('.') ? text : text + ".";
}

foundation::Failure unknown(
    const CLI::App &parser, const CLI::ParseError &error, std::span<const CommandDescription> commands)
{
    if (!parser.get_subcommands().empty())
        return notUnderstood(sentence(error.what()));
    std::vector<std::string> names;
    for (const CommandDescription &command : commands)
        names.emplace_back(command.name);
    for (const std::string &word : parser.remaining()) {
        if (!word.starts_with('-'))
            return notUnderstood(
                "There is no command " + inQuotes(word) + "." + suggestion(word, names) + " \"qvl --help\" shows all.");
    }
    return parser.remaining().empty() ? notUnderstood("No command was given. \"qvl --help\" shows all.")
                                      : notUnderstood(sentence(error.what()));
}

void collect(const DeclaredCommand &command, Arguments &arguments)
{
    arguments.command = command.description;
    for (const CLI::Option *operand : command.operands) {
        for (const std::string &value : operand->results())
            arguments.operands.push_back(value);
    }
    for (const auto &[name, option] : command.options) {
        if (option->count() > 0)
            arguments.options.emplace(name, option->results());
    }
}

} // namespace

std::optional<std::string> Arguments::value(std::string_view option) const
{
    const auto found = options.find(option);
    return found == options.end() || found->second.empty() ? std::nullopt : std::optional(found->second.back());
}

std::vector<std::string> Arguments::values(std::string_view option) const
{
    const auto found = options.find(option);
    return found == options.end() ? std::vector<std::string>() : found->second;
}

std::optional<std::string> Arguments::operand(std::size_t place) const
{
    return place < operands.size() ? std::optional(operands[place]) : std::nullopt;
}

Result<Arguments> readArguments(int count, const char *const *words, std::span<const CommandDescription> commands)
{
    for (int i = 0; i < count; ++i) {
        if (!isUtf8(words[i]))
            return notUnderstood(inQuotes(words[i]) + " is not text in UTF-8.");
    }
    CLI::App parser("Keeps tasks from the command line.", "qvl");
    parser.require_subcommand(1);
    parser.set_version_flag("--version", "qvl " QUELVIN_VERSION);
    Arguments arguments;
    std::list<Typed> sinks;
    const auto *store = parser.add_option("--store", sinks.emplace_back(), "The folder that holds the store")
                            ->expected(1)
                            ->allow_extra_args(false)
                            ->type_name("DIR");
    const auto *settings = parser.add_option("--settings", sinks.emplace_back(), "The file that holds the settings")
                               ->expected(1)
                               ->allow_extra_args(false)
                               ->type_name("FILE");
    std::vector<DeclaredCommand> declared;
    for (const CommandDescription &command : commands)
        declared.push_back(declare(parser, command, sinks));
    try {
        parser.parse(count, words);
    } catch (const CLI::CallForHelp &) {
        const auto chosen = parser.get_subcommands();
        arguments.help = chosen.empty() ? parser.help() : chosen.front()->help(parser.get_name());
        return arguments;
    } catch (const CLI::CallForVersion &version) {
        arguments.help = std::string(version.what()) + "\n";
        return arguments;
    } catch (const CLI::ParseError &error) {
        return unknown(parser, error, commands);
    }
    for (const DeclaredCommand &command : declared) {
        if (command.app->parsed())
            collect(command, arguments);
    }
    if (store->count() > 0)
        arguments.storeFolder = store->results().back();
    if (settings->count() > 0)
        arguments.settingsFile = settings->results().back();
    return arguments;
}

} // namespace cli

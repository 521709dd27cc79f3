// SPDX-License-Identifier: GPL-3.0-or-later
#include "cli/command_error.h"
#include "cli/commands.h"
#include "cli/password_input.h"
#include "cli/record_fields.h"
#include "cli/text.h"
#include "cli/workplace.h"
#include "model/settings_defaults.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace cli {

using foundation::Failure;
using foundation::Result;
using foundation::SettingsTable;
using foundation::SettingValue;
namespace keys = model::keys;

namespace {

constexpr std::array<std::string_view, 2> secrets{keys::ToodleDoPassword, keys::toodledoKey};
/// Kept by the program for itself; set by hand they would only break a synchronisation.
constexpr std::array<std::string_view, 3> ownKeys{keys::toodledoKey, keys::lastKeyUpdate, keys::dateLastSynched};

bool isSecret(std::string_view key)
{
    return std::ranges::find(secrets, key) != secrets.end();
}

/// Every setting with its value in force, and those that have neither value nor default as empty. That a secret lies in
/// the keyring is no setting of its own.
SettingsTable allSettings(const foundation::Settings &settings)
{
    SettingsTable all = settings.all();
    for (const std::string_view key : {keys::ToodleDoUsername, keys::ToodleDoPassword})
        all.emplace(std::string(key), std::string());
    all.emplace(std::string(keys::HasBeenRun), false);
    all.erase(foundation::Settings::secretMark(keys::ToodleDoPassword));
    return all;
}

struct AsText {
    std::string operator()(bool value) const { return value ? "yes" : "no"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(double value) const { return shortest(value); }
    std::string operator()(const std::string &value) const { return value; }
    std::string operator()(foundation::Instant value) const { return foundation::toIso8601(value); }
    std::string operator()(const std::vector<std::byte> &value) const
    {
        return std::to_string(value.size()) + " bytes";
    }
    std::string operator()(const std::map<std::string, std::int64_t> &value) const
    {
        std::string text;
        for (const auto &[name, number] : value)
            text += (text.empty() ? "" : ", ") + name + " = " + std::to_string(number);
        return text;
    }
};

std::string shown(const foundation::Settings &settings, std::string_view key, const SettingValue &value)
{
    std::string text = std::visit(AsText{}, value);
    if (!isSecret(key))
        return text;
    if (settings.isInSecretStore(key))
        return "set, in the keyring";
    return text.empty() ? "not set" : "set";
}

std::optional<bool> yesOrNo(std::string_view text)
{
    constexpr std::array<std::string_view, 4> yes{"yes", "true", "on", "1"};
    constexpr std::array<std::string_view, 4> no{"no", "false", "off", "0"};
    const std::string word = lowered(text);
    if (std::ranges::find(yes, word) != yes.end())
        return true;
    return std::ranges::find(no, word) != no.end() ? std::optional(false) : std::nullopt;
}

/// The text as a value of the same type as `current`.
Result<SettingValue> valueLike(const SettingValue &current, const std::string &key, const std::string &text)
{
    if (std::holds_alternative<std::string>(current))
        return text;
    if (std::holds_alternative<bool>(current)) {
        const auto value = yesOrNo(text);
        return value ? Result<SettingValue>(*value)
                     : notUnderstood(key + " takes yes or no, not " + inQuotes(text) + ".");
    }
    if (std::holds_alternative<std::int64_t>(current)) {
        std::int64_t value = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        if (error != std::errc() || end != text.data() + text.size())
            return notUnderstood(key + " takes a whole number, not " + inQuotes(text) + ".");
        return value;
    }
    return notUnderstood(key + " cannot be set from here.");
}

Done set(Workplace &workplace, const std::string &key, const SettingValue &current, const std::string &text)
{
    std::string typed = text;
    if (key == keys::ToodleDoPassword && text == "-") {
        auto password = readPassword();
        if (!password)
            return Failure(std::move(password.error()));
        typed = std::move(*password);
    }
    auto value = valueLike(current, key, typed);
    if (!value)
        return Failure(std::move(value.error()));
    workplace.settings().set(key, std::move(*value));
    return workplace.settings().synchronizeWithSecrets({});
}

} // namespace

Done showOrSetSettings(Workplace &workplace, const Arguments &arguments)
{
    const SettingsTable all = allSettings(workplace.settings());
    if (arguments.operands.empty()) {
        Table table({{"KEY"}, {"VALUE", true}});
        for (const auto &[key, value] : all)
            table.add({{key}, {shown(workplace.settings(), key, value)}});
        workplace.out += table.text(workplace.terminal());
        return {};
    }
    const std::string &key = arguments.operands[0];
    if (arguments.operands.size() > 1 && std::ranges::find(ownKeys, key) != ownKeys.end())
        return notUnderstood(key + " is kept by the program itself.");
    const auto found = all.find(key);
    if (found == all.end()) {
        std::vector<std::string> names;
        for (const auto &[name, value] : all)
            names.push_back(name);
        return notUnderstood("There is no setting " + inQuotes(key) + "." + suggestion(key, names));
    }
    const auto text = arguments.operand(1);
    if (text && model::secretSettings().contains(key) && !workplace.keepsSecrets())
        return startSyncProgram(workplace, arguments);
    if (text)
        return set(workplace, key, found->second, *text);
    workplace.out += shown(workplace.settings(), key, found->second) + "\n";
    return {};
}

} // namespace cli

// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "foundation/error.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

class Workplace;
class Arguments;

/// An option of a command; one without a placeholder is a switch.
struct OptionDescription {
    std::string_view name; ///< without its dashes
    std::string_view placeholder;
    std::string_view help;
    bool repeats = false;
};

/// What stands after a command without a name; the last may repeat.
struct OperandDescription {
    std::string_view name;
    std::string_view help;
    bool isRequired = true;
    bool repeats = false;
};

/// One command: what can be typed and what runs.
struct CommandDescription {
    std::string_view name;
    std::string_view summary;
    std::vector<OperandDescription> operands;
    std::vector<OptionDescription> options;
    foundation::Result<void> (*run)(Workplace &, const Arguments &) = nullptr;
};

/// What was typed, sorted into a command, its operands and its options. All of it is UTF-8.
class Arguments
{
public:
    const CommandDescription *command = nullptr;
    std::optional<std::string> storeFolder;
    std::optional<std::string> settingsFile;
    std::vector<std::string> operands;
    std::map<std::string, std::vector<std::string>, std::less<>> options;
    std::optional<std::string> help; ///< what to print in place of running a command

    [[nodiscard]] bool has(std::string_view option) const { return options.contains(option); }
    [[nodiscard]] std::optional<std::string> value(std::string_view option) const;
    [[nodiscard]] std::vector<std::string> values(std::string_view option) const;
    /// The operand at a place, or nothing.
    [[nodiscard]] std::optional<std::string> operand(std::size_t place) const;
};

/// Reads a command line; one that does not fit ends in a sentence.
[[nodiscard]] foundation::Result<Arguments> readArguments(
    int count, const char *const *words, std::span<const CommandDescription> commands);

} // namespace cli

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/completion/Scripts.h"

#include <fmt/core.h>
#include <fmt/ranges.h>

namespace
{

constexpr const char* head = R"script(# Completion of tarvelctl for fish, made by: tarvelctl completion fish

function __tarvelctl_cards
    set -l folder $HOME/.config
    set -q XDG_CONFIG_HOME; and set folder $XDG_CONFIG_HOME
    test -r $folder/tarvelctl/groups; and string match -r '^[^#\s]\S*' <$folder/tarvelctl/groups
end

complete -c tarvelctl -f
)script";

std::string quoted(std::string_view text)
{
    std::string result = "'";
    for (const char letter : text) { // fish knows these two escapes within single quotes, and no others
        result += letter == '\'' || letter == '\\' ? "\\" : "";
        result += letter;
    }
    return result + "'";
}

// "-x" wants a value and offers no files, which "complete -f" above has taken away everywhere; "-F" brings them back.
std::string valueOf(const OptionShape& option)
{
    switch (option.kind) {
    case ValueKind::none:
        return "";
    case ValueKind::word:
        return " -x";
    case ValueKind::choice:
        return fmt::format(" -xa '{}'", fmt::join(option.choices, " "));
    case ValueKind::file:
        return " -rF";
    case ValueKind::interface:
        return " -xa '(__fish_print_interfaces)'";
    case ValueKind::card:
        return " -xa '(__tarvelctl_cards)'";
    }
    return "";
}

// The words of a command, in the order in which they come.
std::string conditionOf(std::string_view command)
{
    const std::size_t blank = command.find(' ');
    std::string text = fmt::format("__fish_seen_subcommand_from {}", command.substr(0, blank));
    if (blank != std::string_view::npos) {
        text += fmt::format("; and __fish_seen_subcommand_from {}", command.substr(blank + 1));
    }
    return text;
}

std::string optionLines(const CommandShape& command, const std::string& condition)
{
    std::string text;
    for (const OptionShape& option : command.options) {
        text += "complete -c tarvelctl" + condition;
        for (const std::string& name : option.names) {
            text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
        }
        text += fmt::format("{} -d {}\n", valueOf(option), quoted(option.help));
    }
    return text;
}

std::string wordLines(const std::vector<CommandShape>& words, const std::string& condition)
{
    std::string text;
    for (const CommandShape& word : words) {
        text += fmt::format("complete -c tarvelctl -n {} -a {} -d {}\n", quoted(condition), word.name,
                            quoted(word.summary));
    }
    return text;
}

std::string groupLines(const ProgramShape& shape, const CommandShape& group)
{
    const std::vector<CommandShape> words = wordsAfter(shape, group.name);
    // With its second word the command is whole, and the group has nothing left to offer.
    std::string condition = conditionOf(group.name) + "; and not __fish_seen_subcommand_from";
    for (const CommandShape& word : words) {
        condition += " " + word.name;
    }
    return wordLines(words, condition);
}

std::string argumentLines(const CommandShape& command, const std::string& condition)
{
    std::string text;
    for (const OptionShape& argument : command.arguments) {
        if (argument.kind == ValueKind::file) {
            text += fmt::format("complete -c tarvelctl{} -F\n", condition);
        } else if (argument.kind == ValueKind::choice) {
            text += fmt::format("complete -c tarvelctl{} -a '{}'\n", condition, fmt::join(argument.choices, " "));
        } else if (argument.kind == ValueKind::card) {
            text += fmt::format("complete -c tarvelctl{} -a '(__tarvelctl_cards)'\n", condition);
        }
    }
    return text;
}

} // namespace

std::string fishCompletion(const ProgramShape& shape)
{
    std::string text = head + optionLines(shape.program, "");
    text += wordLines(wordsAfter(shape, ""), "__fish_use_subcommand");
    for (const CommandShape& group : shape.groups) {
        text += groupLines(shape, group);
    }
    for (const CommandShape& command : shape.commands) {
        const std::string condition = " -n " + quoted(conditionOf(command.name));
        text += optionLines(command, condition) + argumentLines(command, condition);
    }
    return text;
}

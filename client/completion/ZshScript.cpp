// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/completion/Scripts.h"

#include <algorithm>
#include <fmt/core.h>
#include <fmt/ranges.h>

namespace
{

constexpr const char* head = R"script(#compdef tarvelctl
# Completion of tarvelctl for zsh, made by: tarvelctl completion zsh

_tarvelctl_cards() {
    local file=${XDG_CONFIG_HOME:-$HOME/.config}/tarvelctl/groups
    local -a cards
    [[ -r $file ]] && cards=(${${(f)"$(<$file)"}%%[[:blank:]]*})
    compadd -- ${cards:#(\#*|)}
}

_tarvelctl_choose() { # from the commands behind the first argument, which are described by the others
    local prefix=$1 state curcontext=$curcontext
    local -a line commands=("${@:2}")
    _arguments -C $_tarvelctl_options '1: :->command' '*:: :->rest'
    case $state in
        command) _describe -t commands command commands ;;
        rest) (( $+functions[${prefix}_$line[1]] )) && ${prefix}_$line[1] ;;
    esac
}

)script";

// Found in a folder of fpath, the file is the body of the function; read with `source`, it has to announce it.
constexpr const char* tail = R"script(
if [[ $funcstack[1] == _tarvelctl ]]; then
    _tarvelctl "$@"
else
    compdef _tarvelctl tarvelctl
fi
)script";

// Quotes for the shell, after what means something to _arguments has lost it.
std::string quoted(std::string_view text, std::string_view special)
{
    std::string result = "'";
    for (const char letter : text) {
        if (letter == '\'') {
            result += "'\\''";
            continue;
        }
        result += special.find(letter) == std::string_view::npos ? "" : "\\";
        result += letter;
    }
    return result + "'";
}

std::string action(const OptionShape& option)
{
    switch (option.kind) {
    case ValueKind::choice:
        return fmt::format("({})", fmt::join(option.choices, " "));
    case ValueKind::file:
        return "_files";
    case ValueKind::interface:
        return "_net_interfaces";
    case ValueKind::card:
        return "_tarvelctl_cards";
    default:
        return " "; // something must stand there, and nobody can guess it
    }
}

std::string optionLines(const CommandShape& command)
{
    std::string text;
    for (const OptionShape& option : command.options) {
        for (const std::string& name : option.names) {
            // What cannot stand behind it any more: its own names, unless it may come again.
            const std::string others = option.repeats ? "*" : fmt::format("({})", fmt::join(option.names, " "));
            const std::string value = option.kind == ValueKind::none ? "" : ":value:" + action(option);
            text += fmt::format("    '{}{}'{}'{}'\n", others, name, quoted("[" + option.help + "]", ":\\"), value);
        }
    }
    return text;
}

std::string argumentLines(const CommandShape& command)
{
    std::string text;
    for (const OptionShape& argument : command.arguments) {
        text += fmt::format("    '{}:{}:{}'\n", argument.repeats ? "*" : "", argument.names.front(), action(argument));
    }
    return text;
}

std::string functionName(std::string_view command)
{
    std::string name = "_tarvelctl";
    name += command.empty() ? "" : "_";
    name += command;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
}

std::string chooser(const ProgramShape& shape, std::string_view group)
{
    std::string lines;
    for (const CommandShape& word : wordsAfter(shape, group)) {
        lines += fmt::format(" \\\n        {}", quoted(word.name + ":" + word.summary, ""));
    }
    const std::string name = functionName(group);
    return fmt::format("{}() {{\n    _tarvelctl_choose {}{}\n}}\n\n", name, name, lines);
}

} // namespace

std::string zshCompletion(const ProgramShape& shape)
{
    std::string text = head;
    text += fmt::format("typeset -ga _tarvelctl_options=(\n{})\n\n", optionLines(shape.program));
    for (const CommandShape& command : shape.commands) {
        text += fmt::format("{}() {{\n    local -a own=(\n{}{})\n    _arguments $own $_tarvelctl_options\n}}\n\n",
                            functionName(command.name), optionLines(command), argumentLines(command));
    }
    for (const CommandShape& group : shape.groups) {
        text += chooser(shape, group.name);
    }
    return text + chooser(shape, "") + tail;
}

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/completion/Scripts.h"

#include <algorithm>
#include <fmt/core.h>
#include <fmt/ranges.h>

namespace
{

constexpr const char* head = R"script(# Completion of tarvelctl for bash, made by: tarvelctl completion bash

# What may stand in a place is told as a kind: "words" and the words, "file", "interface", "card", or "word" for what
# nobody can guess. The functions below set `kind`, to nothing if there is none.

)script";

constexpr const char* body = R"script(
_tarvelctl_cards() { # names and groups that the groups file begins its lines with
    local first
    while read -r first _; do
        [[ -z $first || $first == '#'* ]] || printf '%s\n' "$first"
    done <"$1"
} 2>/dev/null

_tarvelctl_reply() { # to the kind and the beginning of the word
    case ${1%% *} in
        words) mapfile -t COMPREPLY < <(compgen -W "${1#words}" -- "$2") ;;
        card) mapfile -t COMPREPLY < <(compgen -W "$(_tarvelctl_cards "$groups")" -- "$2") ;;
        interface) mapfile -t COMPREPLY < <(cd /sys/class/net && compgen -f -- "$2") ;;
        file)
            compopt -o filenames 2>/dev/null
            mapfile -t COMPREPLY < <(compgen -f -- "$2")
            ;;
        *) COMPREPLY=() ;;
    esac
}

# The line is split at blanks only: bash itself would split a group at its @ and a value at its =.
_tarvelctl() {
    local line=${COMP_LINE:0:COMP_POINT} current='' command='' option='' kind='' word count=0
    local groups=${XDG_CONFIG_HOME:-$HOME/.config}/tarvelctl/groups
    local -a words
    read -ra words <<<"$line"
    if [[ $line != *[[:blank:]] ]]; then
        current=${words[-1]}
        unset 'words[-1]'
    fi
    for word in "${words[@]:1}"; do
        if [[ -n $kind ]]; then
            [[ $option != --groups ]] || groups=${word/#\~/$HOME}
            kind=''
        elif [[ $word == -?* ]]; then
            option=$word
            _tarvelctl_value "$command" "$option"
        elif _tarvelctl_is_command "${command:+$command }$word"; then
            command=${command:+$command }$word
        else
            count=$((count + 1))
        fi
    done
    if [[ -z $kind && $current == --*=* ]]; then
        _tarvelctl_value "$command" "${current%%=*}"
        current=${current#*=}
    elif [[ -z $kind && $current == -* ]]; then
        _tarvelctl_options "$command"
    elif [[ -z $kind ]]; then
        _tarvelctl_argument "$command" "$count"
    fi
    _tarvelctl_reply "$kind" "$current"
}

complete -F _tarvelctl tarvelctl
)script";

std::string kindText(const OptionShape& option)
{
    switch (option.kind) {
    case ValueKind::none:
        return "";
    case ValueKind::word:
        return "word";
    case ValueKind::choice:
        return fmt::format("words {}", fmt::join(option.choices, " "));
    case ValueKind::file:
        return "file";
    case ValueKind::interface:
        return "interface";
    case ValueKind::card:
        return "card";
    }
    return "";
}

std::string branch(std::string_view pattern, std::string_view kind)
{
    return fmt::format("        {}) kind='{}' ;;\n", pattern, kind);
}

std::string function(std::string_view name, std::string_view subject, std::string_view comment,
                     const std::string& branches)
{
    return fmt::format("{}() {{ # {}\n    case {} in\n{}        *) kind='' ;;\n    esac\n}}\n\n", name, comment,
                       subject, branches);
}

// Options with a value, of one command: "versions:--expect" | ...
std::string valueBranches(const CommandShape& command, const std::string& prefix)
{
    std::string text;
    for (const OptionShape& option : command.options) {
        if (option.kind != ValueKind::none) {
            std::vector<std::string> patterns;
            for (const std::string& name : option.names) {
                patterns.push_back(fmt::format("{}:{}", prefix, name));
            }
            text += branch(fmt::format("{}", fmt::join(patterns, " | ")), kindText(option));
        }
    }
    return text;
}

std::string values(const ProgramShape& shape)
{
    std::string branches;
    for (const CommandShape& command : shape.commands) {
        branches += valueBranches(command, fmt::format("'{}'", command.name));
    }
    branches += valueBranches(shape.program, "*"); // last, since the first branch that fits counts
    return function("_tarvelctl_value", "$1:$2", "of an option of a command", branches);
}

std::vector<std::string> optionNames(const CommandShape& command)
{
    std::vector<std::string> names;
    for (const OptionShape& option : command.options) {
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return names;
}

std::string options(const ProgramShape& shape)
{
    const std::vector<std::string> everywhere = optionNames(shape.program);
    std::string branches;
    for (const CommandShape& command : shape.commands) {
        std::vector<std::string> own = optionNames(command);
        std::erase_if(own,
                      [&](const std::string& name) { return std::ranges::find(everywhere, name) != everywhere.end(); });
        branches += branch(fmt::format("'{}'", command.name), fmt::format("{}", fmt::join(own, " ")));
    }
    return function("_tarvelctl_own_options", "$1", "of a command", branches) +
           fmt::format(
               "_tarvelctl_options() {{\n    _tarvelctl_own_options \"$1\"\n    kind=\"words $kind {}\"\n}}\n\n",
               fmt::join(everywhere, " "));
}

std::string words(const ProgramShape& shape, std::string_view group)
{
    std::string text = "words";
    for (const CommandShape& word : wordsAfter(shape, group)) {
        text += " " + word.name;
    }
    return text;
}

std::string arguments(const ProgramShape& shape)
{
    std::string branches = branch("':0'", words(shape, ""));
    for (const CommandShape& group : shape.groups) {
        branches += branch(fmt::format("'{}:0'", group.name), words(shape, group.name));
    }
    for (const CommandShape& command : shape.commands) {
        for (std::size_t index = 0; index < command.arguments.size(); ++index) {
            const OptionShape& argument = command.arguments[index];
            // No more can come behind one that repeats, so its branch may take any number of arguments.
            const std::string place = argument.repeats ? "'*" : fmt::format("{}'", index);
            branches += branch(fmt::format("'{}:{}", command.name, place), kindText(argument));
        }
    }
    return function("_tarvelctl_argument", "$1:$2", "behind a command and that many arguments", branches);
}

std::string isCommand(const ProgramShape& shape)
{
    std::vector<std::string> patterns;
    for (const std::vector<CommandShape>* names : {&shape.groups, &shape.commands}) {
        for (const CommandShape& one : *names) {
            patterns.push_back(fmt::format("'{}'", one.name));
        }
    }
    return fmt::format(
        "_tarvelctl_is_command() {{\n    case $1 in\n        {}) return 0 ;;\n    esac\n    return 1\n}}\n",
        fmt::join(patterns, " | "));
}

} // namespace

std::string bashCompletion(const ProgramShape& shape)
{
    return head + values(shape) + options(shape) + arguments(shape) + isCommand(shape) + body;
}

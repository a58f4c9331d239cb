// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/targets/Targets.h"

#include "client/model/Failure.h"
#include "client/model/Ranges.h"
#include "client/targets/CardBook.h"

#include <algorithm>
#include <fmt/core.h>
#include <istream>
#include <iterator>

namespace
{

constexpr int deepestGroup = 16; // more is a group that holds itself

class Expansion
{
public:
    Expansion(const CardBook& newBook, std::istream& newInput) : book(newBook), input(newInput) {}

    void addAll(const std::vector<std::string>& words, int depth = 0)
    {
        if (depth > deepestGroup) {
            throw usageFailure(fmt::format("the group {} holds itself", words.front()));
        }
        for (const std::string& word : words) {
            add(word, depth);
        }
    }

    std::vector<Target> targets;

private:
    void add(const std::string& word, int depth)
    {
        if (word == "-" && depth == 0) {
            const std::vector<std::string> read{std::istream_iterator<std::string>(input), {}};
            addAll(read, 1);
        } else if (word.front() == '@') {
            addAll(book.membersOf(word.substr(1)), depth + 1);
        } else {
            for (const std::string& label : expandRanges(word)) {
                addOne(label);
            }
        }
    }

    void addOne(const std::string& label)
    {
        const auto sameLabel = [&](const Target& target) { return target.label == label; };
        if (std::any_of(targets.begin(), targets.end(), sameLabel)) {
            return;
        }
        Target target{.label = label, .name = {}, .endpoint = parseEndpoint(label)};
        if (!target.endpoint && label.find_first_not_of("0123456789.:") == std::string::npos) {
            throw usageFailure(fmt::format("\"{}\" is neither an address nor a name", label));
        }
        if (target.endpoint) {
            target.name = book.nameOf(label).value_or("");
        } else {
            target.name = label;
            const std::optional<std::string> address = book.addressOf(label);
            target.endpoint = address ? parseEndpoint(*address) : std::nullopt;
        }
        targets.push_back(std::move(target));
    }

    const CardBook& book;
    std::istream& input;
};

} // namespace

std::vector<Target> parseTargets(const std::vector<std::string>& words, const CardBook& book, std::istream& input)
{
    if (std::any_of(words.begin(), words.end(), [](const std::string& word) { return word.empty(); })) {
        throw usageFailure("a target is empty");
    }
    Expansion expansion(book, input);
    expansion.addAll(words);
    if (expansion.targets.empty()) {
        throw usageFailure("no target given");
    }
    return std::move(expansion.targets);
}

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/targets/Targets.h"

#include "client/model/Failure.h"
#include "client/model/Ranges.h"
#include "client/targets/Inventory.h"
#include "client/targets/Prefix.h"

#include <algorithm>
#include <fmt/core.h>
#include <istream>
#include <iterator>

namespace
{

constexpr int deepestGroup = 16; // more is a group that holds itself

// What people write who mean a range, a pattern, a comment or a prefix; no host name has it.
constexpr std::string_view noNames = "{}#*?/";

class Expansion
{
public:
    Expansion(const Inventory& newInventory, std::istream& newInput, Networks newNetworks)
        : inventory(newInventory), input(newInput), networks(newNetworks)
    {
    }

    void addAll(const std::vector<std::string>& words, int depth = 0)
    {
        if (depth > deepestGroup) {
            throw usageFailure(fmt::format("the group {} holds itself", words.front()));
        }
        for (const std::string& word : words) {
            for (const std::string& part : splitList(word)) {
                add(part, depth);
            }
        }
    }

    std::vector<Target> targets;

private:
    void add(const std::string& word, int depth)
    {
        if (word.empty()) {
            throw usageFailure("a target is empty");
        }
        // Words from there are not read as "-" again, nor are those of a group.
        if (word == "-" && depth == 0) {
            const std::vector<std::string> read{std::istream_iterator<std::string>(input), {}};
            addAll(read, 1);
        } else if (word.front() == '@') {
            addAll(inventory.membersOf(word.substr(1)), depth + 1);
        } else {
            for (const std::string& label : expandRanges(word)) {
                addNetworkOrOne(label);
            }
        }
    }

    void addNetworkOrOne(const std::string& label)
    {
        const std::optional<std::vector<std::string>> hosts = hostsOf(label);
        if (hosts && networks == Networks::refused) {
            throw usageFailure(
                fmt::format("{} is a network; what may change a card takes names and addresses only", label));
        }
        for (const std::string& one : hosts.value_or(std::vector{label})) {
            addOne(one);
        }
    }

    void addOne(const std::string& label)
    {
        const auto sameLabel = [&](const Target& target) { return target.label == label; };
        if (std::any_of(targets.begin(), targets.end(), sameLabel)) {
            return;
        }
        Target target{.label = label, .name = {}, .endpoint = parseEndpoint(label)};
        // It would be asked for as a name, and after the time-out called one that nobody has.
        if (!target.endpoint && label.find_first_not_of("0123456789.:") == std::string::npos) {
            throw usageFailure(fmt::format("\"{}\" is neither an address nor a name", label));
        }
        if (label.find_first_of(noNames) != std::string::npos) {
            throw usageFailure(fmt::format("\"{}\" is no name: it holds one of {}", label, noNames));
        }
        if (target.endpoint) {
            // By what was typed, with its port: many cards may be forwarded from one address.
            target.otherNames = inventory.namesOf(label);
            if (!target.otherNames.empty()) {
                target.name = target.otherNames.front();
                target.otherNames.erase(target.otherNames.begin());
            }
        } else {
            target.name = label;
            const std::optional<std::string> address = inventory.addressOf(label);
            target.endpoint = address ? parseEndpoint(*address) : std::nullopt;
        }
        targets.push_back(std::move(target));
    }

    const Inventory& inventory;
    std::istream& input;
    Networks networks;
};

// As far as the inventory knows.
bool isSame(const Target& one, const Target& other)
{
    return one.label == other.label || (!one.name.empty() && one.name == other.name) ||
           (one.endpoint && one.endpoint == other.endpoint);
}

} // namespace

std::vector<Target> parseTargets(const std::vector<std::string>& words, const Inventory& inventory, std::istream& input,
                                 Networks networks)
{
    Expansion expansion(inventory, input, networks);
    expansion.addAll(words);
    if (expansion.targets.empty()) {
        throw usageFailure("no target given");
    }
    return std::move(expansion.targets);
}

std::vector<Target> withoutTargets(std::vector<Target> targets, const std::vector<std::string>& words,
                                   const Inventory& inventory, std::istream& input)
{
    for (const std::string& word : words) {
        const std::vector<Target> excluded = parseTargets({word}, inventory, input, Networks::expanded);
        const std::size_t removed = std::erase_if(targets, [&](const Target& target) {
            return std::any_of(excluded.begin(), excluded.end(),
                               [&](const Target& one) { return isSame(one, target); });
        });
        if (removed == 0) {
            throw usageFailure(fmt::format("--exclude {} takes none of the targets away", word));
        }
    }
    if (targets.empty()) {
        throw usageFailure("--exclude leaves no target");
    }
    return targets;
}

void requireNames(const std::vector<Target>& targets)
{
    for (const Target& target : targets) {
        if (target.name.empty()) {
            throw usageFailure(fmt::format("{} is an address, but this command addresses cards by name; an address has "
                                           "a name only if the groups file gives it one",
                                           target.label));
        }
    }
}

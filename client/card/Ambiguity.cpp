// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/Ambiguity.h"

#include "client/card/Identity.h"
#include "client/messages/IpConfiguration.h"
#include "client/model/Remedy.h"

#include <algorithm>
#include <fmt/ranges.h>
#include <map>
#include <set>
#include <utility>

namespace
{

using Senders = std::set<std::string>;

bool sayTheSame(const std::vector<CardReply>& answers)
{
    return std::all_of(answers.begin(), answers.end(),
                       [&](const CardReply& one) { return saysTheSame(one, answers.front()); });
}

// Did one sender answer one request twice on one interface?
bool isDoubled(const std::vector<CardReply>& answers)
{
    std::set<std::tuple<std::string, std::string, std::uint32_t>> seen;
    return !std::all_of(answers.begin(), answers.end(), [&](const CardReply& one) {
        return seen.insert({one.interface, one.address, one.reply.header.sequenceId}).second;
    });
}

// More than one sender on an interface, none of whom the card may disown.
bool hasStrangers(const std::vector<CardReply>& answers)
{
    const std::vector<std::string> stated = statedAddresses(answers.front());
    const auto isStated = [&](const std::string& sender) {
        return std::find(stated.begin(), stated.end(), sender) != stated.end();
    };
    std::map<std::string, Senders> byInterface;
    for (const CardReply& answer : answers) {
        byInterface[answer.interface].insert(answer.address);
    }
    return std::any_of(byInterface.begin(), byInterface.end(), [&](const auto& heard) {
        return heard.second.size() > 1 && !std::all_of(heard.second.begin(), heard.second.end(), isStated);
    });
}

} // namespace

std::vector<std::string> statedAddresses(const CardReply& answer)
{
    std::vector<std::string> addresses;
    try {
        for (const InterfaceConfig& interface : parseIpConfiguration(textOf(answer.reply)).interfaces) {
            std::ranges::copy(addressesOf(interface), std::back_inserter(addresses));
        }
    } catch (const Failure&) {
        return {};
    }
    return addresses;
}

bool saysTheSame(const CardReply& one, const CardReply& other)
{
    // The texts whole: even an unreadable one tells two cards apart.
    return one.reply.payload == other.reply.payload && one.reply.header.status == other.reply.header.status;
}

std::string sendersOf(const std::vector<CardReply>& answers)
{
    std::multiset<std::string> names;
    std::set<std::tuple<std::string, std::string, std::uint32_t>> seen;
    for (const CardReply& answer : answers) {
        const std::string name = fmt::format("{} on {}", answer.address, answer.interface);
        // Twins are named twice, since they are two; a sender that answered several requests is one.
        const bool isTwin = !seen.insert({answer.interface, answer.address, answer.reply.header.sequenceId}).second;
        if (names.count(name) == 0 || (isTwin && names.count(name) == 1)) {
            names.insert(name);
        }
    }
    return fmt::format("{}", fmt::join(names, " and "));
}

std::optional<std::string> ambiguityOf(const std::vector<CardReply>& answers)
{
    if (answers.size() < 2) {
        return std::nullopt;
    }
    if (!sayTheSame(answers)) {
        return fmt::format("two cards have this name: different answers came from {}", sendersOf(answers));
    }
    if (isDoubled(answers)) {
        return fmt::format("two cards have this name, and one address: the same request was answered by {}",
                           sendersOf(answers));
    }
    if (hasStrangers(answers)) {
        return fmt::format("two cards may have this name: answers came from {} (a card with both ports in one network "
                           "looks the same if it does not state these addresses)",
                           sendersOf(answers));
    }
    return std::nullopt;
}

Failure ambiguous(const std::string& hint)
{
    return {ExitCode::ambiguous, Category::ambiguous, lookingForCard,
            fmt::format("{}; nothing was sent, {} does it all the same", hint, wordOf(Remedy::goOnAllTheSame))};
}

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/AddressCheck.h"

#include "client/card/IpWatch.h"
#include "client/model/Contains.h"
#include "client/wire/HostInterfaces.h"

#include <algorithm>
#include <fmt/core.h>
#include <functional>

namespace
{

constexpr Seconds patience{1}; // chosen: a host tells its link-layer address within milliseconds

} // namespace

Task<AddressFinding> AddressCheck::look(std::string card, std::string address, std::vector<std::string> present) const
{
    if (HostInterfaces().isOwnAddress(address)) {
        co_return AddressFinding{"in use", fmt::format("{} is this machine's own address", address)};
    }
    if (!HostInterfaces().isOnLinkAnywhere(address)) {
        co_return AddressFinding{
            "not checked",
            fmt::format("{} is in none of this machine's networks, so whether it is free was not checked", address)};
    }
    if (!network.admitsProbes()) { // without an objection: a dry run is to show what would be sent
        co_return AddressFinding{"not checked", ""};
    }
    AddressFinding finding = co_await lookForHosts(card, address, present);
    co_return finding;
}

Task<AddressFinding> AddressCheck::lookForHosts(std::string card, std::string address,
                                                std::vector<std::string> present) const
{
    // Counted first: the table of neighbours has one host for an address, however many have it.
    Heard heard;
    co_await listen(card, address, contains(present, address), heard);
    const auto isOther = [&](const std::string& interface) { return !contains(heard.card, interface); };
    if (heard.census.answersFrom(address) > 1 || std::ranges::any_of(heard.census.hearersOf(address), isOther)) {
        co_return AddressFinding{"in use", fmt::format("another card has {} already", address)};
    }
    if (!heard.card.empty()) {
        co_return AddressFinding{"its own", ""};
    }
    // Else whoever has it would be taken for the card: the host at an address that it only states need not be it.
    std::erase(present, address);
    const Neighbour host = co_await network.seekNeighbour(address, present, patience);
    if (host.state == Neighbour::State::present) {
        co_return AddressFinding{"in use", fmt::format("a host has {} already", address)};
    }
    if (host.state == Neighbour::State::unknown) {
        co_return AddressFinding{"not checked",
                                 fmt::format("whether {} is free could not be checked: {}", address, host.why)};
    }
    co_return AddressFinding{"free", ""};
}

// The card is asked behind the probe: once it has answered, so has been the probe, however slow it is.
Task<void> AddressCheck::listen(std::string card, std::string address, bool isClaimed, Heard& heard) const
{
    std::function<Task<void>()> questions;
    if (isClaimed) {
        questions = [&] { return findHearers(network, card, address, heard.card); };
    }
    if (probe) {
        co_await heard.census.take(network, questions);
    } else if (isClaimed) {
        co_await questions();
    }
}

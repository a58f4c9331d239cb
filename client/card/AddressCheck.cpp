// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/card/AddressCheck.h"

#include "client/card/Census.h"
#include "client/wire/HostInterfaces.h"

#include <fmt/core.h>

namespace
{

constexpr Seconds patience{1}; // chosen: a host tells its link-layer address within milliseconds

} // namespace

Task<AddressFinding> AddressCheck::look(std::string address, std::vector<std::string> present, Claim claim) const
{
    if (isOwnAddress(address)) {
        co_return AddressFinding{"in use", fmt::format("{} is this machine's own address", address)};
    }
    if (!isOnLinkAnywhere(address)) {
        co_return AddressFinding{
            "not checked",
            fmt::format("{} is in none of this machine's networks, so whether it is free was not checked", address)};
    }
    if (!network.admitsProbes()) { // without an objection: a dry run is to show what would be sent
        co_return AddressFinding{"not checked", ""};
    }
    AddressFinding finding = co_await lookForHosts(address, present, claim);
    co_return finding;
}

// The host at an address that the card only states need not be the card.
Task<AddressFinding> AddressCheck::lookForHosts(std::string address, std::vector<std::string> present,
                                                Claim claim) const
{
    // Counted first: the table of neighbours has one host for an address, however many have it.
    const int answers = co_await answersFrom(address);
    if (answers > (claim == Claim::heard ? 1 : 0)) {
        co_return AddressFinding{"in use", fmt::format("another card has {} already", address)};
    }
    if (claim == Claim::heard) {
        co_return AddressFinding{"its own", ""};
    }
    // Else whoever has it would be taken for the card.
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

Task<int> AddressCheck::answersFrom(std::string address) const
{
    if (!probe) {
        co_return 0;
    }
    Census census;
    co_await census.take(network);
    co_return census.answersFrom(address);
}

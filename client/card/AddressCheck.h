// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/engine/Task.h"
#include "client/wire/Network.h"

#include <string>
#include <vector>

// What this machine can see of an address that a card shall get.
struct AddressFinding {
    std::string state;     // "free", "its own", "in use" or "not checked"
    std::string objection; // why the card should not get it; empty if nothing speaks against it
};

// Looks whether the address is this machine's, is in one of its networks, and whether a card answers a probe from it,
// or any host has it. A dry run sends nothing, and `probe` tells whether cards may be asked.
class AddressCheck
{
public:
    AddressCheck(Network& newNetwork, bool newProbe) : network(newNetwork), probe(newProbe) {}

    // `present` is what the interface has now, and `isOwn` tells that the card has the address already.
    Task<AddressFinding> look(std::string address, std::vector<std::string> present, bool isOwn) const;

private:
    Task<int> answersFrom(std::string address) const;
    Task<AddressFinding> lookForHosts(std::string address, std::vector<std::string> present, bool isOwn) const;

    Network& network;
    bool probe;
};

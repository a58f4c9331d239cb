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

// What a card has to do with an address: nothing, its settings say that the interface has it, or it answers from it,
// too.
enum class Claim { none, stated, heard };

// Looks whether the address is this machine's, is in one of its networks, and whether a card answers a probe from it,
// or any host has it. A dry run sends nothing, and `probe` tells whether cards may be asked.
class AddressCheck
{
public:
    AddressCheck(Network& newNetwork, bool newProbe) : network(newNetwork), probe(newProbe) {}

    // `present` is what the card says that the interface has now.
    Task<AddressFinding> look(std::string address, std::vector<std::string> present, Claim claim) const;

private:
    Task<int> answersFrom(std::string address) const;
    Task<AddressFinding> lookForHosts(std::string address, std::vector<std::string> present, Claim claim) const;

    Network& network;
    bool probe;
};

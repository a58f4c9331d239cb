// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include "client/card/Census.h"
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

    // `present` is what the card says that the interface has now. The address is its own if it answers from it, too:
    // one whose cable is out would still say so, and another may have the address meanwhile.
    Task<AddressFinding> look(std::string card, std::string address, std::vector<std::string> present) const;

private:
    // Who answered from the address: the probe, and by the card's name on these interfaces.
    struct Heard {
        Census census;
        std::vector<std::string> card;
    };

    Task<void> listen(std::string card, std::string address, bool isClaimed, Heard& heard) const;
    Task<AddressFinding> lookForHosts(std::string card, std::string address, std::vector<std::string> present) const;

    Network& network;
    bool probe;
};

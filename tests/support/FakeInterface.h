// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>
#include <string>

// While it lives, the production code sees beside the loopback device one more interface: up, able to broadcast, with
// this address. Nothing can be sent on it.
class FakeInterface
{
public:
    FakeInterface(std::string newName, const std::string& address, const std::string& netmask);
    ~FakeInterface();
    FakeInterface(const FakeInterface&) = delete;
    FakeInterface& operator=(const FakeInterface&) = delete;

    // For the fakes only. Numbers in network order.
    std::string name;
    std::uint32_t address;
    std::uint32_t netmask;

    bool isUp = true;
};

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#pragma once

#include <cstdint>

// While it lives, the production code finds behind port `known` of any host what listens on port `actual` of this one,
// and what comes from `actual` seems to come from `known`. So a test can stand for a service whose port is fixed, and
// a second test can do so at the same time.
class PortMapping
{
public:
    PortMapping(std::uint16_t newKnown, std::uint16_t newActual);
    ~PortMapping();
    PortMapping(const PortMapping&) = delete;
    PortMapping& operator=(const PortMapping&) = delete;

    // For the fakes only. Ports in host order; any port but the mapped one stays what it is.
    [[nodiscard]] static std::uint16_t actualOf(std::uint16_t port);
    [[nodiscard]] static std::uint16_t knownOf(std::uint16_t port);

private:
    std::uint16_t known;
    std::uint16_t actual;
};

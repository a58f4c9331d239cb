// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TarvelServiceTcp.h"
#include "services/TarvelServiceUdp.h"
#include "support/ProtocolPage.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace
{

std::vector<unsigned> numbersOf(const auto& table)
{
    std::vector<unsigned> numbers;
    for (const auto& command : table) {
        numbers.push_back(static_cast<unsigned>(command.id));
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::vector<unsigned> describedNumbers(std::string_view transport)
{
    std::vector<unsigned> numbers;
    for (const DescribedCommand& command : describedCommands()) {
        if (command.transport == transport) {
            numbers.push_back(command.number);
        }
    }
    return numbers;
}

TEST(CommandTablesTest, TcpHasTheCommandsThatThePageTellsOfAndNoOther)
{
    EXPECT_EQ(numbersOf(tcpCommands), describedNumbers("TCP"));
}

TEST(CommandTablesTest, UdpHasTheCommandsThatThePageTellsOfAndNoOther)
{
    EXPECT_EQ(numbersOf(udpCommands), describedNumbers("UDP"));
}

} // namespace

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/services/TarvelTcpFixture.h"

namespace
{

constexpr SampleHeader firmwareUpgrade = {.messageFormat = 1, .commandId = 8, .payloadLength = 7};
constexpr const char* script = "/lib/upgrade/fwupgrade";

// What the hardened build says on a card without a key.
constexpr const char* unsignedWarning = "There is no key in /etc/tarveld/keys: firmware of anybody is accepted";

Texts warningsOfAFailure()
{
    return hardened ? Texts{unsignedWarning, "Upgrade FAILED"} : Texts{"Upgrade FAILED"};
}

Texts commandsBeforeTheScript()
{
    Texts commands = commandsOfUnpacking();
    if (hardened) {
        commands.emplace_back(toListKeys);
    }
    return commands;
}

class FirmwareUpgradeTest : public TarvelTcpTest
{
protected:
    void upgrade() { serve(firmwareUpgrade.bytes() + section(Bytes{'a', 'b', 'c'})); }
};

} // namespace

TEST_F(FirmwareUpgradeTest, RunsTheUpgradeScriptAfterTheUnpacking)
{
    upgrade();
    Texts commands = commandsBeforeTheScript();
    commands.emplace_back(script);
    EXPECT_EQ(shell.commands(), commands);
}

TEST_F(FirmwareUpgradeTest, IsAnsweredBeforeTheScriptStarts)
{
    upgrade();
    Texts order = orderOf({"log", "send", "system"});
    std::erase(order, std::string("log: ") + unsignedWarning);
    EXPECT_EQ(
        Texts(order.end() - 6, order.end()),
        (Texts{"system: tar -xzvf firmware.tar.gz -C /tmp/upgrade", "log: Upgrade process starting...", "send: 20",
               "log: Starting /lib/upgrade/fwupgrade", "system: /lib/upgrade/fwupgrade", "log: SUCCESS"}));
}

TEST_F(FirmwareUpgradeTest, LogsItsSuccess)
{
    upgrade();
    Lines lines = {{LOG_INFO, "File size = 3"},
                   {LOG_INFO, "Upgrade process starting..."},
                   {LOG_INFO, "Starting /lib/upgrade/fwupgrade"},
                   {LOG_INFO, "SUCCESS"}};
    if (hardened) {
        lines.insert(lines.begin() + 1, {LOG_WARNING, unsignedWarning});
    }
    EXPECT_EQ(log.lines(), lines);
}

TEST_F(FirmwareUpgradeTest, IsAnsweredOnce)
{
    upgrade();
    expectStatus(firmwareUpgrade, 1);
}

TEST_F(FirmwareUpgradeTest, LeavesTheClientWithSuccessIfTheScriptFails)
{
    shell.answer(script, exitStatus(1));
    upgrade();
    expectStatus(firmwareUpgrade, 1);
    EXPECT_EQ(log.lines().back(), (CapturedLog::Line{LOG_WARNING, "Upgrade FAILED"}));
}

TEST_F(FirmwareUpgradeTest, FailsIfASignalKillsTheScript)
{
    shell.answer(script, killedBy(9));
    upgrade();
    EXPECT_EQ(log.warnings(), warningsOfAFailure());
}

TEST_F(FirmwareUpgradeTest, FailsIfNoShellCanBeRunForTheScript)
{
    for (int before = hardened ? 2 : 1; before > 0; --before) { // without what the tools are asked
        shell.answerNext(0);
    }
    shell.failToStart(ENOMEM);
    upgrade();
    expectStatus(firmwareUpgrade, 1);
    EXPECT_EQ(log.warnings(), warningsOfAFailure());
}

TEST_F(FirmwareUpgradeTest, RunsNoScriptIfTheUnpackingFails)
{
    shell.answer(commandsOfUnpacking().back(), exitStatus(2));
    upgrade();
    expectStatus(firmwareUpgrade, 2);
    Texts commands = commandsOfUnpacking();
    if (hardened) {
        commands.push_back(commands.front()); // nothing stays
    }
    EXPECT_EQ(shell.commands(), commands);
}

TEST_F(FirmwareUpgradeTest, KeepsTheConnectionOpen)
{
    upgrade();
    EXPECT_TRUE(isConnected());
}

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "timesettings/NtpService.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"
#include "unit/timesettings/TimeReferenceNames.h"
#include "util/Hardened.h"

#include <array>
#include <cerrno>

namespace
{

using NtpScriptsTest = SystemTest;
using NtpModeTest = SystemTest;

Texts scripts(const std::string& word)
{
    return {"/etc/init.d/ntpdate " + word, "/etc/init.d/ntpd " + word};
}

class NtpServerTest : public SystemTest
{
protected:
    std::array<char, ntpServerAddressSize> address = {"old"};
};

TEST_F(NtpScriptsTest, Code0StartsTheSynchroniserAndThenTheDaemon)
{
    EXPECT_EQ(controlNtpService(NtpServiceAction{0}), 0);
    EXPECT_EQ(shell.commands(), scripts("start"));
}

TEST_F(NtpScriptsTest, Code1StopsTheSynchroniserAndThenTheDaemon)
{
    EXPECT_EQ(controlNtpService(NtpServiceAction{1}), 0);
    EXPECT_EQ(shell.commands(), scripts("stop"));
}

TEST_F(NtpScriptsTest, Code2RestartsTheSynchroniserAndThenTheDaemon)
{
    EXPECT_EQ(controlNtpService(NtpServiceAction{2}), 0);
    EXPECT_EQ(shell.commands(), scripts("restart"));
}

TEST_F(NtpScriptsTest, Code3EnablesTheSynchroniserAndThenTheDaemon)
{
    EXPECT_EQ(controlNtpService(NtpServiceAction{3}), 0);
    EXPECT_EQ(shell.commands(), scripts("enable"));
}

TEST_F(NtpScriptsTest, Code4DisablesTheSynchroniserAndThenTheDaemon)
{
    EXPECT_EQ(controlNtpService(NtpServiceAction{4}), 0);
    EXPECT_EQ(shell.commands(), scripts("disable"));
}

TEST_F(NtpScriptsTest, TheActionsHaveTheirCodes)
{
    EXPECT_EQ(static_cast<unsigned>(NtpServiceAction::start), 0U);
    EXPECT_EQ(static_cast<unsigned>(NtpServiceAction::stop), 1U);
    EXPECT_EQ(static_cast<unsigned>(NtpServiceAction::restart), 2U);
    EXPECT_EQ(static_cast<unsigned>(NtpServiceAction::enable), 3U);
    EXPECT_EQ(static_cast<unsigned>(NtpServiceAction::disable), 4U);
}

TEST_F(NtpScriptsTest, AnUnknownCodeMeansStart)
{
    EXPECT_EQ(controlNtpService(NtpServiceAction{7}), 0);
    EXPECT_EQ(shell.commands(), scripts("start"));
}

TEST_F(NtpScriptsTest, TheFirstUnknownCodeMeansStart)
{
    controlNtpService(NtpServiceAction{5});
    EXPECT_EQ(shell.commands(), scripts("start"));
}

TEST_F(NtpScriptsTest, ANegativeCodeMeansStart)
{
    controlNtpService(static_cast<NtpServiceAction>(~0U));
    EXPECT_EQ(shell.commands(), scripts("start"));
}

TEST_F(NtpScriptsTest, TheExitStatusOfTheScriptsDoesNotCount)
{
    shell.answerNext(exitStatus(1));
    shell.answerNext(exitStatus(1));
    EXPECT_EQ(controlNtpService(NtpServiceAction::restart), 0);
    EXPECT_EQ(shell.commands(), scripts("restart"));
}

TEST_F(NtpScriptsTest, AScriptKilledByASignalDoesNotCount)
{
    shell.answerNext(killedBy(9));
    shell.answerNext(killedBy(9));
    EXPECT_EQ(controlNtpService(NtpServiceAction::start), 0);
}

TEST_F(NtpScriptsTest, WithoutAShellForTheFirstScriptTheSecondIsNotRun)
{
    shell.failToStart(ENOMEM);
    EXPECT_EQ(controlNtpService(NtpServiceAction::stop), -1);
    EXPECT_EQ(shell.commands(), Texts{"/etc/init.d/ntpdate stop"});
}

TEST_F(NtpScriptsTest, WithoutAShellForTheSecondScriptTheResultIsAFailure)
{
    shell.answerNext(0);
    shell.failToStart(ENOMEM);
    EXPECT_EQ(controlNtpService(NtpServiceAction::stop), -1);
    EXPECT_EQ(shell.commands(), scripts("stop"));
}

TEST_F(NtpScriptsTest, NothingIsLoggedAndNothingIsPrinted)
{
    shell.answerNext(exitStatus(1));
    shell.failToStart(ENOMEM);
    CapturedOutput output;
    controlNtpService(NtpServiceAction::start);
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(output.out() + output.err(), "");
}

TEST_F(NtpServerTest, TheCurrentAddressIsTheSetting)
{
    uci.set(serverKey, "192.168.1.10");
    EXPECT_EQ(getCurrentNtpServerAddress(address), 0);
    EXPECT_STREQ(address.data(), "192.168.1.10");
}

TEST_F(NtpServerTest, TheCurrentAddressIsReadWithOneCommand)
{
    getCurrentNtpServerAddress(address);
    EXPECT_EQ(shell.commands(), Texts{"uci -q get system.ntp.server > /tmp/uci.tmp"});
}

TEST_F(NtpServerTest, AnAddressOf99CharactersIsTakenWhole)
{
    uci.set(serverKey, std::string(99, 'a'));
    EXPECT_EQ(getCurrentNtpServerAddress(address), 0);
    EXPECT_EQ(address.data(), std::string(99, 'a'));
}

TEST_F(NtpServerTest, ALongerAddressIsCutAfter99Characters)
{
    uci.set(serverKey, std::string(150, 'a'));
    EXPECT_EQ(getCurrentNtpServerAddress(address), 0);
    EXPECT_EQ(address.data(), std::string(99, 'a'));
}

TEST_F(NtpServerTest, WithoutTheSettingTheCurrentAddressIsEmptyAndAFailure)
{
    EXPECT_EQ(getCurrentNtpServerAddress(address), -1);
    EXPECT_STREQ(address.data(), "");
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(NtpServerTest, AResultThatCannotBeReadIsAFailureWithAnEmptyAddress)
{
    uci.set(serverKey, "192.168.1.10");
    failNext("fopen", EIO);
    CapturedOutput output;
    EXPECT_EQ(getCurrentNtpServerAddress(address), -1);
    EXPECT_STREQ(address.data(), "");
}

TEST_F(NtpServerTest, ANewAddressIsSetButNotCommitted)
{
    uci.set(serverKey, "192.168.1.10");
    EXPECT_EQ(setNtpServerAddress("10.1.1.1"), 0);
    EXPECT_EQ(shell.commands(),
              (Texts{"uci -q get system.ntp.server > /tmp/uci.tmp", "uci -q set system.ntp.server=10.1.1.1"}));
}

TEST_F(NtpServerTest, BothAddressesAreLogged)
{
    uci.set(serverKey, "192.168.1.10");
    setNtpServerAddress("10.1.1.1");
    EXPECT_EQ(log.lines(),
              (Lines{{6, "Current NTP server address: 192.168.1.10"}, {6, "New NTP server address: 10.1.1.1"}}));
}

TEST_F(NtpServerTest, TheSameAddressIsNotSetAgain)
{
    uci.set(serverKey, "192.168.1.10");
    EXPECT_EQ(setNtpServerAddress("192.168.1.10"), 0);
    EXPECT_EQ(shell.commands(), Texts{"uci -q get system.ntp.server > /tmp/uci.tmp"});
}

TEST_F(NtpServerTest, TheSameAddressIsLoggedAsNoChange)
{
    uci.set(serverKey, "192.168.1.10");
    setNtpServerAddress("192.168.1.10");
    EXPECT_EQ(log.lines(), (Lines{{6, "Current NTP server address: 192.168.1.10"},
                                  {6, "New NTP server address: 192.168.1.10"},
                                  {6, "No change in NTP server configuration, keep current configuration file"}}));
}

TEST_F(NtpServerTest, TwoEmptyAddressesAreTheSame)
{
    uci.set(serverKey, "");
    EXPECT_EQ(setNtpServerAddress(""), 0);
    EXPECT_EQ(log.infos().back(), "No change in NTP server configuration, keep current configuration file");
}

TEST_F(NtpServerTest, AnAddressThatOnlyBeginsLikeTheCurrentOneIsNew)
{
    uci.set(serverKey, "192.168.1.10");
    setNtpServerAddress("192.168.1.1");
    EXPECT_EQ(shell.commands().back(), "uci -q set system.ntp.server=192.168.1.1");
}

TEST_F(NtpServerTest, AnAddressThatDiffersInCaseIsNew)
{
    uci.set(serverKey, "ntp.example");
    setNtpServerAddress("NTP.example");
    EXPECT_EQ(shell.commands().back(), "uci -q set system.ntp.server=NTP.example");
}

TEST_F(NtpServerTest, AnEmptyAddressReplacesTheCurrentOneUnlessTheBuildIsHardened)
{
    uci.set("system.ntp.server", "192.168.1.10");
    EXPECT_EQ(setNtpServerAddress(""), hardened ? -1 : 0);
    EXPECT_EQ(shell.commands().back() == "uci -q set system.ntp.server=", !hardened);
}

TEST_F(NtpServerTest, ShellTextIsSetUnlessTheBuildIsHardened)
{
    uci.set("system.ntp.server", "192.168.1.10");
    EXPECT_EQ(setNtpServerAddress("x; reboot"), hardened ? -1 : 0);
    EXPECT_EQ(shell.commands().back() == "uci -q set system.ntp.server=x; reboot", !hardened);
    const Texts refusal = {"NTP server \"x; reboot\" is neither an address nor a host name, refused"};
    EXPECT_EQ(log.warnings(), hardened ? refusal : Texts{});
}

TEST_F(NtpServerTest, ThePresentSettingIsKeptEvenIfItIsNoHost)
{
    uci.set("system.ntp.server", "10.0.0.1 10.0.0.2");
    EXPECT_EQ(setNtpServerAddress("10.0.0.1 10.0.0.2"), 0);
    EXPECT_EQ(shell.commands().size(), 1U);
}

TEST_F(NtpServerTest, WithoutACurrentAddressNoneCanBeSetAndNothingIsLogged)
{
    EXPECT_EQ(setNtpServerAddress("10.1.1.1"), -1);
    EXPECT_EQ(shell.commands(), Texts{"uci -q get system.ntp.server > /tmp/uci.tmp"});
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(NtpServerTest, ASettingThatCannotBeChangedIsAFailureWithoutAWarning)
{
    uci.set(serverKey, "192.168.1.10");
    shell.answer("uci -q set system.ntp.server=10.1.1.1", exitStatus(1));
    EXPECT_EQ(setNtpServerAddress("10.1.1.1"), -1);
    EXPECT_TRUE(log.warnings().empty());
}

TEST_F(NtpModeTest, WithTheStartLinkTheModeIsNtp)
{
    sandbox.write("/etc/rc.d/S65ntpd", "");
    std::array<char, timeModeSize> mode;
    EXPECT_EQ(isNtpEnabled(mode), 0);
    EXPECT_STREQ(mode.data(), "Ntp");
}

TEST_F(NtpModeTest, WithoutTheStartLinkTheModeIsManual)
{
    std::array<char, timeModeSize> mode;
    EXPECT_EQ(isNtpEnabled(mode), -1);
    EXPECT_STREQ(mode.data(), "Manual");
}

TEST_F(NtpModeTest, OnlyThePresenceOfTheStartLinkIsAskedFor)
{
    std::array<char, timeModeSize> mode;
    isNtpEnabled(mode);
    EXPECT_EQ(callsTo("access"), Texts{"/etc/rc.d/S65ntpd 0"});
    EXPECT_TRUE(log.lines().empty());
}

} // namespace

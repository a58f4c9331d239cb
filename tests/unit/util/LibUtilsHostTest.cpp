// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "support/SystemTest.h"

#include <cerrno>
#include <memory>
#include <type_traits>

#include <unistd.h>

using LibUtilsHostTest = SystemTest;

class DaemonizeTest : public SystemTest
{
protected:
    // Of the child that daemonize() goes on in. It runs in a process of its own, which must get to its own end: one
    // that daemonize() ended would take the whole test program along, with a status that counts as success.
    template<typename Expectation>
    static void expectOfChild(Expectation isAsExpected)
    {
        constexpr int goesOn = 42;
        EXPECT_EXIT(
            {
                returnNext("fork", 0);
                returnNext("setsid", 1);
                _exit(isAsExpected() ? goesOn : 1);
            },
            testing::ExitedWithCode(goesOn), "");
    }
};

static_assert(std::has_virtual_destructor_v<LibUtils>);

TEST_F(LibUtilsHostTest, AnObjectCanBeMadeAndDestroyedThoughItHoldsNothing)
{
    const std::unique_ptr<LibUtils> object = std::make_unique<LibUtils>();
    EXPECT_EQ(sizeof *object, sizeof(void*));
}

TEST_F(LibUtilsHostTest, ADottedQuadIsAValidAddress)
{
    for (const char* text : {"192.168.1.10", "0.0.0.0", "255.255.255.255"}) {
        EXPECT_EQ(LibUtils::isValidIpAddress(text), 1) << text;
    }
}

TEST_F(LibUtilsHostTest, ShortFormsAreValidAddresses)
{
    for (const char* text : {"10.1", "10.1.2", "167772161"}) {
        EXPECT_EQ(LibUtils::isValidIpAddress(text), 1) << text;
    }
}

TEST_F(LibUtilsHostTest, OctalAndHexadecimalPartsAreValid)
{
    for (const char* text : {"0177.0.0.1", "0x7f.0.0.1", "0X7F000001", "0xAb.0xcD.0xeF.1"}) {
        EXPECT_EQ(LibUtils::isValidIpAddress(text), 1) << text;
    }
}

TEST_F(LibUtilsHostTest, AnythingElseIsNoAddress)
{
    CapturedOutput output;
    for (const char* text : {"", "1.2.3.256", "1.2.3.4.5", "1..2", "abc", "card-7", "-1", "300.1.1.1", "1.2.3.4:5"}) {
        EXPECT_EQ(LibUtils::isValidIpAddress(text), 0) << text;
    }
}

TEST_F(LibUtilsHostTest, NothingMayFollowAnAddressBecauseItEndsUpInAShellCommand)
{
    CapturedOutput output;
    for (const char* text :
         {"1.2.3.4 ;reboot", "1.2.3.4 ", "1.2.3.4\n", "1.2.3.4\treboot", "1.2.3.4;reboot", " 1.2.3.4"}) {
        EXPECT_EQ(LibUtils::isValidIpAddress(text), 0) << text;
    }
}

TEST_F(LibUtilsHostTest, AnInvalidAddressIsNamedOnStandardError)
{
    CapturedOutput output;
    LibUtils::isValidIpAddress("1.2.3.256");
    EXPECT_EQ(output.err(), "1.2.3.256 is not a valid IP address\n");
    EXPECT_EQ(output.out(), "");
}

TEST_F(LibUtilsHostTest, AnAddressWithAShellCommandBehindItIsNamedOnStandardErrorToo)
{
    CapturedOutput output;
    LibUtils::isValidIpAddress("1.2.3.4 ;reboot");
    EXPECT_EQ(output.err(), "1.2.3.4 ;reboot is not a valid IP address\n");
}

TEST_F(LibUtilsHostTest, AValidAddressIsTakenSilently)
{
    CapturedOutput output;
    LibUtils::isValidIpAddress("10.1");
    EXPECT_EQ(output.out() + output.err(), "");
}

TEST_F(LibUtilsHostTest, TheHostNameIsASetting)
{
    uci.set("system.@system[0].hostname", "card-7");
    std::string name;
    EXPECT_EQ(LibUtils::getHostName(name), 0);
    EXPECT_EQ(name, "card-7");
}

TEST_F(LibUtilsHostTest, TheHostNameIsReadWithOneCommand)
{
    std::string name;
    LibUtils::getHostName(name);
    EXPECT_EQ(shell.commands(), Texts{"uci -q get system.@system[0].hostname > /tmp/uci.tmp"});
}

TEST_F(LibUtilsHostTest, WithoutTheSettingThereIsNoHostName)
{
    std::string name = "old";
    EXPECT_EQ(LibUtils::getHostName(name), -1);
    EXPECT_EQ(name, "old");
}

TEST_F(DaemonizeTest, AFailingForkEndsTheProcessWithOne)
{
    EXPECT_EXIT(
        {
            failNext("fork", EAGAIN);
            LibUtils::daemonize();
        },
        testing::ExitedWithCode(1), "^ERROR while daemonizing: fork\\(\\) failed\n$");
}

TEST_F(DaemonizeTest, AFailingSetsidEndsTheProcessWithOne)
{
    EXPECT_EXIT(
        {
            returnNext("fork", 0);
            failNext("setsid", EPERM);
            LibUtils::daemonize();
        },
        testing::ExitedWithCode(1), "^ERROR while daemonizing: setsid\\(\\) failed\n$");
}

TEST_F(DaemonizeTest, TheParentEndsWithZeroAndSaysNothing)
{
    EXPECT_EXIT(
        {
            returnNext("fork", 4711);
            LibUtils::daemonize();
        },
        testing::ExitedWithCode(0), "^$");
}

TEST_F(DaemonizeTest, TheChildSaysOnStandardOutputThatItIsADaemon)
{
    expectOfChild([] {
        CapturedOutput output;
        LibUtils::daemonize();
        return output.out() == "Process is now running as a daemon\n" && output.err().empty();
    });
}

TEST_F(DaemonizeTest, TheChildKeepsItsDirectoryAndDescriptors)
{
    expectOfChild([] {
        const CapturedOutput output;
        LibUtils::daemonize();
        return orderOf({"fork", "setsid", "chdir", "open", "close", "fopen", "system"}) == Texts{"fork: ", "setsid: "};
    });
}

TEST_F(DaemonizeTest, TheChildLeadsASessionOfItsOwn)
{
    CapturedOutput output;
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    EXPECT_EXIT(
        {
            LibUtils::daemonize();
            const char leads = getsid(0) == getpid() ? 'y' : 'n';
            _exit(write(ends[1], &leads, 1) == 1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    close(ends[1]);
    char leads = '?';
    EXPECT_EQ(read(ends[0], &leads, 1), 1);
    EXPECT_EQ(leads, 'y');
    close(ends[0]);
}

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/FirmwareSignature.h"
#include "support/SystemTest.h"

#include <syslog.h>

namespace
{

constexpr const char* keysQuestion = "{ test ! -e /etc/tarveld/keys || ls /etc/tarveld/keys; } 2>/dev/null && echo /";
constexpr const char* toReadSums = "cat SHA256SUMS";
constexpr const char* toCompare = "sha256sum -c SHA256SUMS >/dev/null 2>&1";

std::string toVerify(const std::string& key)
{
    return "usign -V -q -m SHA256SUMS -x SHA256SUMS.sig -p '/etc/tarveld/keys/" + key + "' >/dev/null 2>&1";
}

std::string sum(const std::string& file)
{
    return std::string(64, '0') + "  " + file + "\n";
}

class FirmwareSignatureTest : public SystemTest
{
protected:
    FirmwareSignatureTest()
    {
        shell.answer(keysQuestion, 0, "first.pub\nsecond key\n/\n");
        shell.answer(toReadSums, 0, sum("d/f") + sum("./g"));
    }

    void expectRefusal(const Texts& files, const std::string& reason)
    {
        EXPECT_EQ(checkSignature(files), -1);
        EXPECT_EQ(log.lines(), (Lines{{LOG_WARNING, "Firmware is not accepted: " + reason}}));
    }

    const Texts signedFiles = {"d/f", "g", "SHA256SUMS", "SHA256SUMS.sig"};
};

} // namespace

TEST_F(FirmwareSignatureTest, AcceptsWhatTheFirstKeyHasSigned)
{
    EXPECT_EQ(checkSignature(signedFiles), 0);
    EXPECT_EQ(shell.commands(), (Texts{keysQuestion, toVerify("first.pub"), toReadSums, toCompare}));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(FirmwareSignatureTest, AcceptsWhatAnotherKeyHasSigned)
{
    shell.answer(toVerify("first.pub"), exitStatus(1));
    EXPECT_EQ(checkSignature(signedFiles), 0);
}

TEST_F(FirmwareSignatureTest, RefusesWhatNoKeyHasSigned)
{
    shell.answer(toVerify("first.pub"), exitStatus(1));
    shell.answer(toVerify("second key"), exitStatus(1));
    expectRefusal(signedFiles, "none of the keys in /etc/tarveld/keys has signed its SHA256SUMS");
}

TEST_F(FirmwareSignatureTest, TakesACrashOfTheToolForNoSignature)
{
    shell.answer(keysQuestion, 0, "first.pub\n/\n");
    shell.answer(toVerify("first.pub"), killedBy(11));
    expectRefusal(signedFiles, "none of the keys in /etc/tarveld/keys has signed its SHA256SUMS");
}

TEST_F(FirmwareSignatureTest, UsesNoKeyWhoseNameCouldBeMoreThanAName)
{
    shell.answer(keysQuestion, 0, "x'; reboot; '\n/\n");
    EXPECT_EQ(checkSignature(signedFiles), -1);
    EXPECT_EQ(shell.commands(), Texts{keysQuestion});
}

TEST_F(FirmwareSignatureTest, NeedsBothFiles)
{
    expectRefusal({"d/f", "SHA256SUMS"}, "it has no SHA256SUMS and SHA256SUMS.sig");
    log.clear();
    expectRefusal({"d/f", "SHA256SUMS.sig"}, "it has no SHA256SUMS and SHA256SUMS.sig");
}

TEST_F(FirmwareSignatureTest, RefusesAFileThatIsNotInTheSums)
{
    Texts files = signedFiles;
    files.emplace_back("f");
    expectRefusal(files, "f is not in its SHA256SUMS");
}

TEST_F(FirmwareSignatureTest, TakesNoShortLineForASum)
{
    shell.answer(toReadSums, 0, "d/f\ng\n");
    expectRefusal(signedFiles, "d/f is not in its SHA256SUMS");
}

TEST_F(FirmwareSignatureTest, RefusesAWrongSum)
{
    shell.answer(toCompare, exitStatus(1));
    expectRefusal(signedFiles, "a sum in its SHA256SUMS is wrong");
}

TEST_F(FirmwareSignatureTest, AcceptsAnythingWithoutAKeyAndSaysSo)
{
    shell.answer(keysQuestion, 0, "/\n");
    EXPECT_EQ(checkSignature({"f"}), 0);
    EXPECT_EQ(log.lines(),
              (Lines{{LOG_WARNING, "There is no key in /etc/tarveld/keys: firmware of anybody is accepted"}}));
}

TEST_F(FirmwareSignatureTest, DoesNotTakeKeysThatCannotBeListedForNone)
{
    for (const char* output : {"", "first.pub\n"}) { // the shell, or ls, was killed
        shell.answer(keysQuestion, killedBy(9), output);
        log.clear();
        expectRefusal(signedFiles, "the keys in /etc/tarveld/keys cannot be listed");
    }
}

TEST_F(FirmwareSignatureTest, DoesNotTakeKeysForNoneIfNoShellCanBeRun)
{
    shell.answer(keysQuestion, -1);
    expectRefusal(signedFiles, "the keys in /etc/tarveld/keys cannot be listed");
}

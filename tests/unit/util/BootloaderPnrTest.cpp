// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "util/LibUtils.h"

#include "support/ErrorText.h"
#include "support/SystemTest.h"

#include <cerrno>

namespace
{

class BootloaderPnrTest : public SystemTest
{
protected:
    // A flash that holds `text` at `position` and is filled up to `size` bytes.
    void writeFlash(std::size_t position, std::string_view text, char filling = '\xFF', std::size_t size = 1024)
    {
        std::string flash(size, filling);
        flash.replace(position, text.size(), text);
        sandbox.write("/dev/mtd0ro", flash);
    }

    int read() { return LibUtils::readBootloaderPnr(value); }

    std::string value = "old";
    CapturedOutput output;
};

constexpr std::string_view sample("PNR=BOOT 1.4\0", 13);

TEST_F(BootloaderPnrTest, ThePartNumberStandsBetweenTheMarkAndTheNextNul)
{
    writeFlash(200, sample);
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "BOOT 1.4");
    EXPECT_EQ(output.err(), "");
}

TEST_F(BootloaderPnrTest, TheMarkMayBeTheFirstBytes)
{
    writeFlash(0, sample);
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "BOOT 1.4");
}

TEST_F(BootloaderPnrTest, NulsBeforeTheMarkDoNotCount)
{
    writeFlash(200, sample, '\0');
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "BOOT 1.4");
}

TEST_F(BootloaderPnrTest, TheNulMayBeTheLastByte)
{
    writeFlash(1024 - sample.size(), sample);
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "BOOT 1.4");
}

TEST_F(BootloaderPnrTest, ANulRightBehindTheMarkIsAnEmptyPartNumber)
{
    writeFlash(200, std::string_view("PNR=\0", 5));
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "");
}

TEST_F(BootloaderPnrTest, OnlyTheFirstMarkCounts)
{
    writeFlash(200, std::string_view("PNR=one\0PNR=two\0", 16));
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "one");
}

TEST_F(BootloaderPnrTest, ASecondMarkBeforeTheNulBelongsToThePartNumber)
{
    writeFlash(200, std::string_view("PNR=onePNR=two\0", 15));
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "onePNR=two");
}

TEST_F(BootloaderPnrTest, NewlinesBelongToThePartNumber)
{
    writeFlash(200, std::string_view("PNR=one\ntwo\0", 12));
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "one\ntwo");
}

TEST_F(BootloaderPnrTest, HighBytesBelongToThePartNumber)
{
    writeFlash(200, std::string_view("PNR=\xE9\xFF\0", 7));
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "\xE9\xFF");
}

TEST_F(BootloaderPnrTest, WithoutAMarkThereIsNone)
{
    writeFlash(200, "pnr=BOOT");
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(value, "");
    EXPECT_EQ(output.err(), "Bootloader PNR doesn't exist\n");
}

TEST_F(BootloaderPnrTest, AMarkBehindTheFirst1024BytesDoesNotCount)
{
    writeFlash(1022, sample, '\xFF', 2048);
    EXPECT_EQ(read(), 0);
    EXPECT_EQ(output.err(), "Bootloader PNR doesn't exist\n");
}

TEST_F(BootloaderPnrTest, AMarkThatEndsWithTheBlockIsNotBounded)
{
    writeFlash(1020, "PNR=");
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(value, "");
    EXPECT_EQ(output.err(), "Bootloader PNR string is not bounded\n");
}

TEST_F(BootloaderPnrTest, APartNumberWithoutNulInTheBlockIsNotBounded)
{
    writeFlash(200, "PNR=BOOT", 'x', 2048);
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(value, "");
    EXPECT_EQ(output.err(), "Bootloader PNR string is not bounded\n");
}

TEST_F(BootloaderPnrTest, AShortDeviceIsUnreadable)
{
    writeFlash(0, sample, '\xFF', 1023);
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(value, "");
    EXPECT_EQ(output.err(), "End of file unexpectedly reached\n");
}

TEST_F(BootloaderPnrTest, AnEmptyDeviceIsUnreadable)
{
    sandbox.write("/dev/mtd0ro", "");
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(output.err(), "End of file unexpectedly reached\n");
}

TEST_F(BootloaderPnrTest, AReadThatFailsTellsWhy)
{
    sandbox.makeDirectory("/dev/mtd0ro"); // opens, but cannot be read
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(value, "");
    EXPECT_EQ(output.err(), errorText("fread() failed: ", EISDIR) + "\n");
}

TEST_F(BootloaderPnrTest, ADeviceThatCannotBeOpenedTellsWhyAndLeavesTheValue)
{
    EXPECT_EQ(read(), -1);
    EXPECT_EQ(value, "old");
    EXPECT_EQ(output.err(), errorText("fopen() FAILED: ", ENOENT) + "\n");
}

TEST_F(BootloaderPnrTest, AFailingCloseIsReportedAndChangesNothing)
{
    writeFlash(200, sample);
    failNext("fclose", EIO);
    EXPECT_EQ(read(), 1);
    EXPECT_EQ(value, "BOOT 1.4");
    EXPECT_EQ(output.err(), errorText("fclose() FAILED: ", EIO) + "\n");
}

TEST_F(BootloaderPnrTest, TheDeviceIsClosedAfterAFailure)
{
    sandbox.write("/dev/mtd0ro", "");
    read();
    EXPECT_EQ(callsTo("fclose").size(), 1U);
}

TEST_F(BootloaderPnrTest, TheBlockIsReadInOnePiece)
{
    writeFlash(200, sample);
    read();
    EXPECT_EQ(callsTo("fread"), Texts{"1024"});
}

TEST_F(BootloaderPnrTest, NothingIsLoggedAndStandardOutputStaysEmpty)
{
    read();
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(output.out(), "");
}

} // namespace

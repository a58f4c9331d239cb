// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "unit/services/TarvelTcpFixture.h"

namespace
{

constexpr const char* archive = "firmware.tar.gz";

SampleHeader uploadOf(std::size_t size)
{
    return {.messageFormat = 1, .commandId = 7, .payloadLength = static_cast<std::uint32_t>(size) + 4};
}

class FirmwareUploadTest : public TarvelTcpTest
{
protected:
    void upload(std::size_t size) { serve(uploadOf(size).bytes() + section(Bytes(size, 'x'))); }
};

} // namespace

TEST_F(FirmwareUploadTest, StoresTheArchiveInTheWorkingDirectory)
{
    failNext("remove", EPERM);
    serve(uploadOf(3).bytes() + section(Bytes{'a', 'b', 'c'}));
    EXPECT_EQ(callsTo("fopen"), (std::vector<std::string>{"firmware.tar.gz we"}));
    EXPECT_EQ(sandbox.read(archive), "abc");
}

TEST_F(FirmwareUploadTest, LogsTheSize)
{
    upload(3);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_INFO, "File size = 3"}}));
}

TEST_F(FirmwareUploadTest, UnpacksTheArchiveAndRunsNothingElse)
{
    upload(3);
    EXPECT_EQ(shell.commands(), commandsOfUnpacking());
}

TEST_F(FirmwareUploadTest, AnnouncesTheUnpacking)
{
    upload(3);
    EXPECT_EQ(out, "Extracting files from firmware.tar.gz to /tmp/upgrade\n");
}

TEST_F(FirmwareUploadTest, DeletesTheArchiveOnceItIsUnpacked)
{
    upload(3);
    EXPECT_FALSE(sandbox.exists(archive));
    EXPECT_EQ(shell.commands(), commandsOfUnpacking());
    const Texts order = orderOf({"system", "remove", "send"});
    EXPECT_EQ(Texts(order.end() - 3, order.end()),
              (Texts{"system: tar -xzvf firmware.tar.gz -C /tmp/upgrade", "remove: firmware.tar.gz", "send: 20"}));
}

TEST_F(FirmwareUploadTest, IsAnsweredWithSuccessAndKeepsTheConnectionOpen)
{
    upload(3);
    expectStatus(uploadOf(3), 1);
    EXPECT_TRUE(isConnected());
}

TEST_F(FirmwareUploadTest, ReceivesAnArchiveOf4096BytesInOnePiece)
{
    upload(4096);
    EXPECT_EQ(callsTo("recv"), (std::vector<std::string>{"20", "4", "4096"}));
}

TEST_F(FirmwareUploadTest, ReceivesAnArchiveOf4097BytesInTwoPieces)
{
    upload(4097);
    EXPECT_EQ(callsTo("recv"), (std::vector<std::string>{"20", "4", "4096", "1"}));
    EXPECT_EQ(callsTo("fwrite"), (std::vector<std::string>{"4096", "1"}));
}

TEST_F(FirmwareUploadTest, ReplacesALongerStaleArchive)
{
    failNext("remove", EPERM);
    sandbox.write(archive, "something longer");
    upload(3);
    EXPECT_EQ(sandbox.read(archive), "xxx");
}

TEST_F(FirmwareUploadTest, FailsWithoutAnyArchiveByte)
{
    upload(0);
    expectStatus(uploadOf(0), 2);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_INFO, "File size = 0"}}));
    EXPECT_EQ(shell.commands().size(), hardened ? 1U : 0U);
}

TEST_F(FirmwareUploadTest, FailsInTheHardenedBuildIfTheDirectoryCannotBeMadeAnew)
{
    shell.answer("rm -rf /tmp/upgrade && mkdir -m 700 /tmp/upgrade", exitStatus(1));
    upload(3);
    expectStatus(uploadOf(3), hardened ? 2 : 1);
}

TEST_F(FirmwareUploadTest, RefusesAnotherLayoutAndReadsNothingOfThePayload)
{
    const SampleHeader request = {.messageFormat = 0, .commandId = 7, .payloadLength = 0};
    serve(request.bytes());
    expectStatus(request, 2);
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_WARNING, "FWUpgrade message should only contain a 8bit section!"}}));
    EXPECT_NE(out.find("Command ID       (16bit): 0x7\n"), std::string::npos);
    EXPECT_EQ(callsTo("recv"), (std::vector<std::string>{"20"}));
}

TEST_F(FirmwareUploadTest, GetsNoReplyIfTheClientClosesBeforeTheCount)
{
    client.send(uploadOf(3).bytes() + Bytes{3, 0});
    client.finishSending();
    dispatch();
    EXPECT_TRUE(client.hasNothing());
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"Client closed the connection"}));
}

TEST_F(FirmwareUploadTest, GetsNoReplyIfTheCountCannotBeReceived)
{
    client.send(uploadOf(3).bytes());
    passNext("recv");
    failNext("recv", EIO);
    dispatch();
    EXPECT_TRUE(client.hasNothing());
}

TEST_F(FirmwareUploadTest, ReadsTheCountBeforeItComparesThePayloadLength)
{
    const SampleHeader request = {.messageFormat = 1, .commandId = 7, .payloadLength = 0};
    serve(request.bytes() + little32(3));
    expectStatus(request, 2);
    EXPECT_EQ(callsTo("recv"), (std::vector<std::string>{"20", "4"}));
}

TEST_F(FirmwareUploadTest, RefusesAPayloadLengthThatIsNotTheCountPlusFour)
{
    SampleHeader request = uploadOf(3);
    request.payloadLength = 8;
    serve(request.bytes() + little32(3));
    expectStatus(request, 2);
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{
                               {LOG_DEBUG, "TarvelServiceTcp.cpp, line 171, in ProcessFWUpload(): oups!"}}));
    EXPECT_TRUE(callsTo("fopen").empty());
}

TEST_F(FirmwareUploadTest, AddsFourToTheCountIn32Bits)
{
    const SampleHeader request = {.messageFormat = 1, .commandId = 7, .payloadLength = 3};
    client.send(request.bytes() + little32(0xFFFFFFFF));
    client.finishSending();
    dispatch();
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"File size = 4294967295", "Client closed the connection"}));
    EXPECT_EQ(callsTo("recv").back(), "4096");
    expectStatus(request, 2);
}

TEST_F(FirmwareUploadTest, FailsIfTheArchiveCannotBeOpened)
{
    failNext("fopen", EACCES);
    upload(3);
    expectStatus(uploadOf(3), 2);
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_WARNING, std::string("fopen() failed: ") + std::strerror(EACCES)}}));
}

TEST_F(FirmwareUploadTest, FailsIfTheConnectionEndsInsideTheArchiveAndKeepsWhatCame)
{
    client.send(uploadOf(5000).bytes() + little32(5000) + Bytes(4500, 'x'));
    client.finishSending();
    dispatch();
    expectStatus(uploadOf(5000), 2);
    EXPECT_EQ(log.texts(), (std::vector<std::string>{"File size = 5000", "Client closed the connection"}));
    EXPECT_EQ(sandbox.read(archive).size(), 4096U);
}

TEST_F(FirmwareUploadTest, FailsIfWritingFails)
{
    failNext("fwrite", ENOSPC);
    upload(3);
    expectStatus(uploadOf(3), 2);
    EXPECT_EQ(log.lines(),
              (std::vector<CapturedLog::Line>{{LOG_INFO, "File size = 3"}, {LOG_WARNING, "fwrite() failed"}}));
}

TEST_F(FirmwareUploadTest, LeavesTheRestOfTheArchiveUnreadIfWritingFails)
{
    failNext("fwrite", ENOSPC);
    upload(4097);
    EXPECT_EQ(callsTo("recv"), (std::vector<std::string>{"20", "4", "4096"}));
}

TEST_F(FirmwareUploadTest, JudgesAWriteByTheStreamAndNotByTheCount)
{
    limitNext("fwrite", 1);
    upload(3);
    expectStatus(uploadOf(3), 1);
}

TEST_F(FirmwareUploadTest, SucceedsEvenIfTheFileCannotBeClosed)
{
    failNext("fclose", ENOSPC);
    upload(3);
    expectStatus(uploadOf(3), 1);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"fclose() failed"}));
}

TEST_F(FirmwareUploadTest, ReportsAFailingCloseAfterAFailedWrite)
{
    failNext("fwrite", ENOSPC);
    failNext("fclose", ENOSPC);
    upload(3);
    expectStatus(uploadOf(3), 2);
    EXPECT_EQ(log.warnings(), (std::vector<std::string>{"fwrite() failed", "fclose() failed"}));
}

TEST_F(FirmwareUploadTest, FailsAndKeepsTheArchiveIfItCannotBeUnpacked)
{
    shell.answer(commandsOfUnpacking().back(), exitStatus(2));
    upload(3);
    expectStatus(uploadOf(3), 2);
    EXPECT_TRUE(sandbox.exists(archive));
    EXPECT_EQ(err, "Extracting files from archive failed\n");
}

TEST_F(FirmwareUploadTest, SucceedsEvenIfTheArchiveCannotBeDeleted)
{
    failNext("remove", EBUSY);
    upload(3);
    expectStatus(uploadOf(3), 1);
    EXPECT_EQ(log.warnings(),
              (std::vector<std::string>{std::string("Deleting firmware.tar.gz FAILED: ") + std::strerror(EBUSY)}));
}

TEST_F(FirmwareUploadTest, TellsWhetherTheArchiveWasUnpacked)
{
    CapturedOutput output;
    MessageHeader header = {};
    header.commandId = 7;
    header.messageFormat = 1;
    header.payloadLength = 5;
    client.send(section(Bytes{'x'}));
    EXPECT_EQ(service.processFwUpload(header), 0);
    header.messageFormat = 2;
    EXPECT_EQ(service.processFwUpload(header), -1);
}

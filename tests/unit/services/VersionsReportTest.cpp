// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/VersionsReport.h"
#include "unit/services/TarvelTcpFixture.h"

namespace
{

const SampleHeader versionsGet = {.commandId = 1};

class VersionsReportTest : public TarvelTcpTest
{
protected:
    std::string report()
    {
        serve(versionsGet.bytes());
        return textOf(receiveTextReply());
    }

    // A flash that starts with this record.
    void writeFlash(const std::string& record) const
    {
        std::string flash = record;
        flash.resize(1024, '\xFF');
        sandbox.write("/dev/mtd0ro", flash);
    }
};

std::string around(const std::string& lines)
{
    return "<Versions>\n" + lines + "</Versions>";
}

std::string component(const std::string& id, const std::string& version)
{
    return "\t<Component Id=\"" + id + "\" Version=\"" + version + "\"/>\n";
}

const std::string nul(1, '\0');

} // namespace

TEST(ComponentLineTest, IsAppendedUnescapedWithATabAndALineEnd)
{
    std::string text = "before";
    appendComponentLine(text, "a<b", "1\"2&3");
    EXPECT_EQ(text, "before\t<Component Id=\"a<b\" Version=\"1\"2&3\"/>\n");
}

TEST_F(VersionsReportTest, IsTheBareElementWithoutAnySource)
{
    serve(versionsGet.bytes());
    EXPECT_EQ(hex(receiveTextReply()), "81c39aff 01010504 01800101 0d0c0b0a 1b000000 17000000 "
                                       "3c566572 73696f6e 733e0a3c 2f566572 73696f6e 733e00");
}

TEST_F(VersionsReportTest, SucceedsAndKeepsTheConnectionOpen)
{
    EXPECT_EQ(report(), around(""));
    EXPECT_TRUE(isConnected());
    EXPECT_TRUE(client.hasNothing());
}

TEST_F(VersionsReportTest, LogsNothing)
{
    report();
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(VersionsReportTest, NamesTheDravHardware)
{
    sandbox.write("/tmp/drav_pnr_assy", "1234\nnot this\n");
    EXPECT_EQ(report(), around(component("DravHardware", "1234")));
}

TEST_F(VersionsReportTest, NamesTheVemkHardware)
{
    sandbox.write("/tmp/vemk_pnr_assy", "5678\n");
    EXPECT_EQ(report(), around(component("VemkHardware", "5678")));
}

TEST_F(VersionsReportTest, NamesTheBootLoader)
{
    writeFlash("xxPNR=90.12" + nul);
    EXPECT_EQ(report(), around(component("BootLoader", "90.12")));
}

TEST_F(VersionsReportTest, LeavesOutABootLoaderWithoutAMark)
{
    writeFlash("no mark" + nul);
    EXPECT_EQ(report(), around(""));
}

TEST_F(VersionsReportTest, LeavesOutABootLoaderWithoutAnEnd)
{
    writeFlash("PNR=90.12");
    EXPECT_EQ(report(), around(""));
}

TEST_F(VersionsReportTest, NamesTheBaseSystemOnceAndNotAsAFile)
{
    sandbox.write("/etc/pnr/squashfs", "3456\n");
    EXPECT_EQ(report(), around(component("BaseSystem", "3456")));
}

TEST_F(VersionsReportTest, LeavesOutAnEmptyFile)
{
    sandbox.write("/etc/pnr/squashfs", "");
    sandbox.write("/tmp/drav_pnr_assy", "");
    EXPECT_EQ(report(), around(""));
}

TEST_F(VersionsReportTest, NamesTheInstalledFilesInSortedOrder)
{
    sandbox.write("/etc/pnr/b", "2\n");
    sandbox.write("/etc/pnr/c", "3\n");
    sandbox.write("/etc/pnr/a", "1\n");
    EXPECT_EQ(report(), around(component("a", "1") + component("b", "2") + component("c", "3")));
}

TEST_F(VersionsReportTest, LeavesOutADirectoryAmongTheInstalledFiles)
{
    sandbox.makeDirectory("/etc/pnr/directory");
    sandbox.write("/etc/pnr/file", "1\n");
    EXPECT_EQ(report(), around(component("file", "1")));
}

TEST_F(VersionsReportTest, LeavesOutAnUnreadableFile)
{
    sandbox.write("/etc/pnr/a", "1\n");
    sandbox.write("/etc/pnr/b", "2\n");
    failNext("fopen", ENOENT); // drav
    failNext("fopen", ENOENT); // vemk
    failNext("fopen", ENOENT); // flash
    failNext("fopen", EACCES);
    EXPECT_EQ(report(), around(component("b", "2")));
}

TEST_F(VersionsReportTest, HasTheFixedComponentsBeforeTheInstalledOnes)
{
    sandbox.write("/etc/pnr/Another", "5\n");
    sandbox.write("/etc/pnr/squashfs", "4\n");
    writeFlash("PNR=3" + nul);
    sandbox.write("/tmp/vemk_pnr_assy", "2\n");
    sandbox.write("/tmp/drav_pnr_assy", "1\n");
    EXPECT_EQ(report(),
              around(component("DravHardware", "1") + component("VemkHardware", "2") + component("BootLoader", "3") +
                     component("BaseSystem", "4") + component("Another", "5")));
}

TEST_F(VersionsReportTest, CopiesAVersionUnescaped)
{
    sandbox.write("/tmp/drav_pnr_assy", "1\"<2\n");
    EXPECT_EQ(report(), around(component("DravHardware", "1\"<2")));
}

TEST_F(VersionsReportTest, LeavesAPayloadToBeTakenAsTheNextHeader)
{
    const SampleHeader payload = {.commandId = 0x55};
    serve(SampleHeader{.messageFormat = 1, .commandId = 1, .payloadLength = 20}.bytes() + payload.bytes());
    static_cast<void>(receiveTextReply());
    dispatch();
    expectStatus(payload, 6);
}

TEST_F(VersionsReportTest, HoldsATextOf2047Bytes)
{
    const std::size_t others = around(component("a", "") + component("b", "")).size();
    sandbox.write("/etc/pnr/a", std::string(1000, '1'));
    sandbox.write("/etc/pnr/b", std::string(2047 - others - 1000, '2'));
    const std::string text = report();
    EXPECT_EQ(text.size(), 2047U);
    EXPECT_TRUE(text.ends_with("2\"/>\n</Versions>"));
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(VersionsReportTest, LeavesOutAllFromTheFirstComponentThatDoesNotFit)
{
    const std::size_t others = around(component("a", "") + component("b", "")).size();
    sandbox.write("/etc/pnr/a", std::string(1000, '1'));
    sandbox.write("/etc/pnr/b", std::string(2048 - others - 1000, '2'));
    sandbox.write("/etc/pnr/c", "3");
    EXPECT_EQ(report(), around(component("a", std::string(1000, '1'))));
}

TEST_F(VersionsReportTest, WarnsOnceWithTheFirstComponentThatIsLeftOut)
{
    for (const char* name : {"a", "b", "c", "d"}) {
        sandbox.write(std::string("/etc/pnr/") + name, std::string(1000, '1'));
    }
    report();
    EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{
                               {LOG_WARNING, "Versions report is full: b and all components after it are left out"}}));
}

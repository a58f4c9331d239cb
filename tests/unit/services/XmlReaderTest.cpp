// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/XmlReader.h"
#include "support/SystemTest.h"
#include "unit/services/NoXmlMemory.h"
#include "util/Hardened.h"

#include <algorithm>
#include <memory>
#include <string>

#include <libxml/xmlerror.h>
#include <syslog.h>

namespace
{

using XmlReaderTest = SystemTest;

void fail()
{
    XmlReader reader("<broken");
    reader.read();
}

} // namespace

TEST_F(XmlReaderTest, ParsesADocumentTypeUnlessTheBuildIsHardened)
{
    const XmlReader reader("<!DOCTYPE a><a/>");
    EXPECT_EQ(static_cast<bool>(reader), !hardened);
}

TEST_F(XmlReaderTest, WalksADocumentNodeByNode)
{
    XmlReader reader("<a><b/></a>");
    EXPECT_EQ(reader.read(), 1);
    EXPECT_EQ(reader.name(), "a");
    EXPECT_EQ(reader.nodeType(), XmlReader::element);
    EXPECT_EQ(reader.read(), 1);
    EXPECT_EQ(reader.name(), "b");
    EXPECT_EQ(reader.read(), 1);
    EXPECT_EQ(reader.nodeType(), XmlReader::endElement);
    EXPECT_EQ(reader.read(), 0);
}

TEST_F(XmlReaderTest, HasNoNameBeforeTheFirstRead)
{
    const XmlReader reader("<a/>");
    EXPECT_FALSE(reader.name().has_value());
}

TEST_F(XmlReaderTest, TellsWhetherANodeHasAttributes)
{
    XmlReader reader("<a x=\"1\"><b/></a>");
    reader.read();
    EXPECT_TRUE(reader.hasAttributes());
    reader.read();
    EXPECT_FALSE(reader.hasAttributes());
}

TEST_F(XmlReaderTest, ReadsAnAttributeWithItsEntitiesReplaced)
{
    XmlReader reader("<a x=\"1&amp;2\"/>");
    reader.read();
    EXPECT_EQ(reader.attribute("x"), "1&2");
}

TEST_F(XmlReaderTest, TellsAMissingAttributeFromAnEmptyOne)
{
    XmlReader reader("<a x=\"\"/>");
    reader.read();
    EXPECT_EQ(reader.attribute("x"), "");
    EXPECT_FALSE(reader.attribute("y").has_value());
}

TEST_F(XmlReaderTest, EndsTheDocumentAtItsFirstNul)
{
    XmlReader reader(std::string("<a/>\0<b", 7));
    EXPECT_EQ(reader.read(), 1);
    EXPECT_EQ(reader.read(), 0);
}

TEST_F(XmlReaderTest, OwnsALongTextThatItReadsLater)
{
    auto document = std::make_unique<std::string>("<a>" + std::string(100000, ' ') + "<b/></a>");
    XmlReader reader(std::move(*document));
    document.reset();
    while (reader.read() == 1 && reader.name() != "b") {
    }
    EXPECT_EQ(reader.name(), "b");
}

TEST_F(XmlReaderTest, FailsForABlankDocument)
{
    XmlReader reader("   ");
    EXPECT_EQ(reader.read(), -1);
}

TEST_F(XmlReaderTest, LogsAFailedReadOnOneLine)
{
    XmlReader reader("<broken");
    EXPECT_EQ(reader.read(), -1);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines().front().level, LOG_WARNING);
    EXPECT_TRUE(log.texts().front().starts_with("xmlTextReaderRead() failed: "));
    EXPECT_EQ(log.texts().front().find('\n'), std::string::npos);
    EXPECT_GT(log.texts().front().size(), std::string("xmlTextReaderRead() failed: ").size());
}

TEST_F(XmlReaderTest, TellsAnErrorOfTwoLinesOnOne)
{
    XmlReader reader("<a b=\"\xFF\"/>"); // libxml2 up to 2.12 lists the bytes on a line of their own
    EXPECT_EQ(reader.read(), -1);
    EXPECT_EQ(XmlReader::lastError().find('\n'), std::string::npos);
    EXPECT_EQ(log.texts(), Texts{"xmlTextReaderRead() failed: " + XmlReader::lastError()});
    std::string told = xmlGetLastError()->message;
    ASSERT_EQ(told.back(), '\n');
    told.pop_back();
    std::replace(told.begin(), told.end(), '\n', ' ');
    EXPECT_EQ(XmlReader::lastError(), told);
}

TEST_F(XmlReaderTest, ForgetsTheErrorOfAnEarlierDocument)
{
    fail();
    EXPECT_NE(XmlReader::lastError(), "no error recorded");
    const XmlReader next("<a/>");
    EXPECT_EQ(XmlReader::lastError(), "no error recorded");
}

TEST_F(XmlReaderTest, PrintsNothingOfTheLibraryOnStandardError)
{
    CapturedOutput output;
    fail();
    EXPECT_EQ(output.err(), "");
    EXPECT_EQ(output.out(), "");
}

TEST_F(XmlReaderTest, LogsThatNoReaderCanBeMade)
{
    const NoXmlMemory noMemory;
    const XmlReader reader("<a/>");
    EXPECT_FALSE(static_cast<bool>(reader));
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines().front().level, LOG_WARNING);
    EXPECT_TRUE(log.texts().front().starts_with("xmlReaderForDoc() failed: "));
}

TEST_F(XmlReaderTest, IsReadableAfterTheLibraryWasCleanedUp)
{
    cleanUpXmlLibrary();
    XmlReader reader("<a/>");
    EXPECT_EQ(reader.read(), 1);
}

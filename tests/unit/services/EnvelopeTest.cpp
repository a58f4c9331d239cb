// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/Envelope.h"
#include "support/SystemTest.h"
#include "unit/services/NoXmlMemory.h"
#include "util/Hardened.h"

#include <syslog.h>

namespace
{

class EnvelopeTest : public SystemTest
{
protected:
    void expectAccepted(const std::string& document)
    {
        EXPECT_EQ(parseEnvelope(document, from, to), 0);
        EXPECT_EQ(from, "mgmt");
        EXPECT_EQ(to, "card7");
        EXPECT_TRUE(log.lines().empty());
    }

    void expectRefused(const std::string& document, const std::vector<std::string>& warnings)
    {
        EXPECT_EQ(parseEnvelope(document, from, to), -1);
        EXPECT_EQ(log.warnings(), warnings);
        EXPECT_EQ(log.lines().size(), warnings.size());
    }

    // With a reason in the words of the library.
    void expectUnreadable(const std::string& document)
    {
        EXPECT_EQ(parseEnvelope(document, from, to), -1);
        ASSERT_EQ(log.warnings().size(), 1U);
        EXPECT_TRUE(log.warnings().front().starts_with("xmlTextReaderRead() failed: ")) << log.warnings().front();
    }

    std::string from;
    std::string to;
};

constexpr const char* names = " From=\"mgmt\" To=\"card7\"/>";

} // namespace

TEST_F(EnvelopeTest, IsReadFromAnIpConfiguration)
{
    expectAccepted(std::string("<IpConfiguration") + names);
}

TEST_F(EnvelopeTest, IsReadFromARebootCard)
{
    expectAccepted(std::string("<RebootCard") + names);
}

TEST_F(EnvelopeTest, AcceptsALongerIpConfigurationName)
{
    expectAccepted(std::string("<IpConfigurationFoo") + names);
}

TEST_F(EnvelopeTest, AcceptsALongerRebootCardName)
{
    expectAccepted(std::string("<RebootCard.now") + names);
}

TEST_F(EnvelopeTest, PassesARootThatIsNotClosed)
{
    expectAccepted("<IpConfiguration From=\"mgmt\" To=\"card7\">");
}

TEST_F(EnvelopeTest, PassesADeclarationBeforeTheRoot)
{
    expectAccepted(std::string("<?xml version=\"1.0\"?><RebootCard") + names);
}

TEST_F(EnvelopeTest, AcceptsEmptyNames)
{
    EXPECT_EQ(parseEnvelope("<RebootCard From=\"\" To=\"\"/>", from, to), 0);
    EXPECT_EQ(from, "");
    EXPECT_EQ(to, "");
}

TEST_F(EnvelopeTest, EndsAtTheFirstNul)
{
    expectAccepted(std::string("<RebootCard") + names + std::string(1, '\0') + "<junk");
}

TEST_F(EnvelopeTest, RefusesAShorterName)
{
    expectRefused(std::string("<IpConfig") + names, {"Wrong node name: IpConfig"});
}

TEST_F(EnvelopeTest, RefusesANameInOtherLetters)
{
    expectRefused(std::string("<rebootCard") + names, {"Wrong node name: rebootCard"});
}

TEST_F(EnvelopeTest, RefusesACommentBeforeTheRoot)
{
    expectRefused(std::string("<!-- c --><RebootCard") + names, {"Wrong node name: #comment"});
}

TEST_F(EnvelopeTest, RefusesAProcessingInstructionBeforeTheRoot)
{
    expectRefused(std::string("<?style x?><RebootCard") + names, {"Wrong node name: style"});
}

TEST_F(EnvelopeTest, RefusesTheTypeOfADocumentTypeWithTheRootsName)
{
    expectRefused(std::string("<!DOCTYPE RebootCard><RebootCard") + names,
                  {hardened ? "Document refused: it has a document type declaration" : "Wrong node type: 10"});
}

TEST_F(EnvelopeTest, RefusesTheTypeOfAProcessingInstructionWithTheRootsName)
{
    expectRefused(std::string("<?IpConfiguration x?><RebootCard") + names, {"Wrong node type: 7"});
}

TEST_F(EnvelopeTest, RefusesARootWithoutAttributes)
{
    expectRefused("<RebootCard/>", {"No attributes in node: RebootCard"});
}

TEST_F(EnvelopeTest, RefusesAMissingSender)
{
    expectRefused("<RebootCard To=\"card7\"/>",
                  {"xmlTextReaderGetAttribute() failed: no error recorded", "Datagram sender identity is missing"});
}

TEST_F(EnvelopeTest, RefusesAMissingTarget)
{
    expectRefused("<RebootCard From=\"mgmt\"/>",
                  {"xmlTextReaderGetAttribute() failed: no error recorded", "Datagram target is missing"});
    EXPECT_EQ(from, "mgmt");
}

TEST_F(EnvelopeTest, LogsNoStaleErrorOfAnEarlierDocument)
{
    EXPECT_EQ(parseEnvelope("<broken", from, to), -1);
    log.clear();
    expectRefused("<RebootCard From=\"mgmt\"/>",
                  {"xmlTextReaderGetAttribute() failed: no error recorded", "Datagram target is missing"});
}

TEST_F(EnvelopeTest, RefusesAnEmptyDocument)
{
    expectUnreadable("");
}

TEST_F(EnvelopeTest, RefusesABlankDocument)
{
    expectUnreadable(" \n ");
}

TEST_F(EnvelopeTest, RefusesABrokenDocument)
{
    expectUnreadable("<RebootCard From=\"mgmt");
}

TEST_F(EnvelopeTest, IsRefusedIfNoReaderCanBeMade)
{
    const std::string document = std::string("<RebootCard") + names;
    const NoXmlMemory noMemory;
    EXPECT_EQ(parseEnvelope(document, from, to), -1);
    ASSERT_EQ(log.warnings().size(), 1U);
    EXPECT_TRUE(log.warnings().front().starts_with("xmlReaderForDoc() failed: ")) << log.warnings().front();
}

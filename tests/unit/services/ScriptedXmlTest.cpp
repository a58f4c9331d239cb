// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
// What no document makes the present libxml2 say, but its interface allows: the end before the first node, and a node
// without a name. The text reader's functions are defined here, so that the library's own are not linked.

#include "services/Envelope.h"
#include "services/IpConfigSet.h"
#include "services/TimeReferenceMessages.h"
#include "services/XmlReader.h"
#include "support/SystemTest.h"

#include <libxml/xmlreader.h>
#include <syslog.h>

namespace
{

int nextRead = 0;

struct Opened {
    std::string name;
    bool withEncoding = true;
    int options = -1;
} lastOpened;

} // namespace

xmlTextReaderPtr xmlReaderForDoc(const xmlChar* /*text*/, const char* name, const char* encoding, int options)
{
    lastOpened = {name, encoding != nullptr, options};
    return reinterpret_cast<xmlTextReaderPtr>(&nextRead);
}

void xmlFreeTextReader(xmlTextReaderPtr /*reader*/) {}

int xmlTextReaderRead(xmlTextReaderPtr /*reader*/)
{
    return nextRead;
}

const xmlChar* xmlTextReaderConstName(xmlTextReaderPtr /*reader*/)
{
    return nullptr;
}

int xmlTextReaderNodeType(xmlTextReaderPtr /*reader*/)
{
    return 0;
}

int xmlTextReaderHasAttributes(xmlTextReaderPtr /*reader*/)
{
    return 0;
}

xmlChar* xmlTextReaderGetAttribute(xmlTextReaderPtr /*reader*/, const xmlChar* /*name*/)
{
    return nullptr;
}

namespace
{

class ScriptedXmlTest : public SystemTest
{
protected:
    void expectWarning(const std::string& warning)
    {
        EXPECT_EQ(log.lines(), (std::vector<CapturedLog::Line>{{LOG_WARNING, warning}}));
    }

    std::string from;
    std::string to;
};

constexpr int atEnd = 0;
constexpr int atNode = 1;
constexpr int failing = -1;

} // namespace

TEST_F(ScriptedXmlTest, AReaderIsMadeWithoutEncodingAndOptions)
{
    const XmlReader reader("<a/>");
    EXPECT_EQ(lastOpened.name, "noname.xml");
    EXPECT_FALSE(lastOpened.withEncoding);
    EXPECT_EQ(lastOpened.options, 0);
}

TEST_F(ScriptedXmlTest, AnEnvelopeNeedsANode)
{
    nextRead = atEnd;
    EXPECT_EQ(parseEnvelope("", from, to), -1);
    expectWarning("No data in XML");
}

TEST_F(ScriptedXmlTest, AnEnvelopeNeedsANodeName)
{
    nextRead = atNode;
    EXPECT_EQ(parseEnvelope("", from, to), -1);
    expectWarning("Missing node name");
}

TEST_F(ScriptedXmlTest, ATimeReferenceNeedsANode)
{
    nextRead = atEnd;
    EXPECT_EQ(parseTimeReferenceConfiguration(""), -1);
    expectWarning("Time reference configuration not found in message");
}

TEST_F(ScriptedXmlTest, ATimeReferenceNeedsANodeName)
{
    nextRead = atNode;
    EXPECT_EQ(parseTimeReferenceConfiguration(""), -1);
    expectWarning("Failed to find node name in message");
}

TEST_F(ScriptedXmlTest, InterfacesNeedNodeNames)
{
    nextRead = atNode;
    EXPECT_EQ(configureInterfaces(""), -1);
    expectWarning("Missing node name");
}

TEST_F(ScriptedXmlTest, AFailureWithoutARecordedErrorIsLoggedAsSuch)
{
    nextRead = failing;
    EXPECT_EQ(parseEnvelope("", from, to), -1);
    expectWarning("xmlTextReaderRead() failed: no error recorded");
}

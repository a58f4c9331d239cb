// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/messages/Versions.h"

#include "client/model/Failure.h"
#include "unit/client/FailureOf.h"

#include <gtest/gtest.h>

namespace
{

using Components = std::vector<Component>;

Versions versionsOf(const std::string& text)
{
    return parseVersions(text);
}

bool isRefusedReport(const std::string& text)
{
    const Failure failure = failureOf([&] { (void)versionsOf(text); });
    return failure.code == ExitCode::protocol && failure.phase.empty();
}

std::string report(const std::string& version)
{
    return "<Versions>\n\t<Component Id=\"kernel\" Version=\"" + version +
           "\"/>\n\t<Component Id=\"base\" Version=\"1.0\"/>\n</Versions>";
}

TEST(VersionsReportTest, GivesItsComponentsInOrder)
{
    const Components expected = {{"kernel", "6.1"}, {"base", "1.0"}};
    EXPECT_EQ(versionsOf(report("6.1")).components, expected);
    EXPECT_FALSE(versionsOf(report("6.1")).malformed);
}

TEST(VersionsReportTest, MayBeEmpty)
{
    EXPECT_TRUE(versionsOf("<Versions>\n</Versions>").components.empty());
}

TEST(VersionsReportTest, IsMarkedMalformedIfItWasReadByItsForm)
{
    EXPECT_TRUE(versionsOf(report("6.1<beta>")).malformed);
}

TEST(VersionsReportTest, MayHoldUnescapedVersions)
{
    for (const char* version :
         {"6.1<", "\"6.1\"", "a&b", "R&amp;D", "&#97;", "6\"x", "\" Version=", "\xff\xfe", "</Versions>"}) {
        const Components expected = {{"kernel", version}, {"base", "1.0"}};
        EXPECT_EQ(versionsOf(report(version)).components, expected) << version;
    }
}

TEST(VersionsReportTest, HasNoOtherForm)
{
    for (const char* text : {"", "Versions", "<Versions>", "<Versions>\n\t<Component Id=\"a\"/>\n</Versions>",
                             "<Version></Version>", "<Versions>\n\t<Component Id=\"a\" Version=\"b\"/>\n",
                             "<Versions>\n\t<Other Id=\"a\" Version=\"b\"/>\n</Versions>"}) {
        EXPECT_TRUE(isRefusedReport(text)) << text;
    }
}

TEST(VersionsReportTest, IsRefusedWithADocumentType)
{
    EXPECT_TRUE(isRefusedReport("<!DOCTYPE Versions [<!ENTITY a \"b\">]><Versions></Versions>"));
}

} // namespace

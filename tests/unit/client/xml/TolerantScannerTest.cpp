// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/xml/TolerantScanner.h"

#include <array>
#include <gtest/gtest.h>

namespace
{

constexpr std::array<std::string_view, 3> names = {"A", "B", "C"};
constexpr ElementForm form = {"E", names, "/>"};

std::optional<XmlElement> scan(std::string_view text)
{
    std::optional<XmlElement> element = scanElement(text, form);
    return text.empty() ? element : std::nullopt;
}

TEST(TolerantScannerTest, ReadsAllAttributes)
{
    const std::optional<XmlElement> element = scan(R"(<E A="1" B="2" C="3"/>)");
    ASSERT_TRUE(element);
    EXPECT_EQ(element->attribute("A"), "1");
    EXPECT_EQ(element->attribute("B"), "2");
    EXPECT_EQ(element->attribute("C"), "3");
}

TEST(TolerantScannerTest, LetsAnyAttributeBeMissing)
{
    const std::optional<XmlElement> element = scan(R"(<E B="2"/>)");
    ASSERT_TRUE(element);
    EXPECT_EQ(element->attribute("A"), std::nullopt);
    EXPECT_EQ(element->attribute("B"), "2");
}

TEST(TolerantScannerTest, KeepsQuotesAndBracketsOfAValue)
{
    const std::optional<XmlElement> element = scan(R"(<E A="a"b<c>&d" B="/>"/>)");
    ASSERT_TRUE(element);
    EXPECT_EQ(element->attribute("A"), R"(a"b<c>&d)");
    EXPECT_EQ(element->attribute("B"), "/>");
}

TEST(TolerantScannerTest, TakesOneElementOffTheFront)
{
    std::string_view text = R"(<E A="1"/><E A="2"/>)";
    ASSERT_TRUE(scanElement(text, form));
    EXPECT_EQ(text, R"(<E A="2"/>)");
}

TEST(TolerantScannerTest, LeavesTextOfAnotherFormAlone)
{
    for (const std::string_view other :
         {"", "<", "<F A=\"1\"/>", "<E A=\"1\"", "<E A=\"1", "<E  A=\"1\"/>", "<E A=\"1\" D=\"2\">", "E A=\"1\"/>"}) {
        std::string_view text = other;
        EXPECT_FALSE(scanElement(text, form)) << other;
        EXPECT_EQ(text, other);
    }
}

} // namespace

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/report/Html.h"

#include <gtest/gtest.h>

namespace
{

TEST(HtmlTest, WhatMarkupIsMadeOfIsEscaped)
{
    EXPECT_EQ(Html("<b a=\"1\" b='2'>&").text(), "&lt;b a=&quot;1&quot; b=&#39;2&#39;&gt;&amp;");
}

TEST(HtmlTest, WhatIsEscapedAlreadyIsEscapedOnceMore)
{
    EXPECT_EQ(Html("&lt;").text(), "&amp;lt;");
}

TEST(HtmlTest, WhatNobodyCouldSeeIsInNumbers)
{
    EXPECT_EQ(Html(std::string_view("a\0b\x1b\n", 5)).text(), "a\\x00b\\x1b\\x0a");
    EXPECT_EQ(Html("\u2028\u202e\u2066").text(), "\\xe2\\x80\\xa8\\xe2\\x80\\xae\\xe2\\x81\\xa6");
}

TEST(HtmlTest, BytesThatAreNoUtf8AreInNumbers)
{
    EXPECT_EQ(Html("\xff\xc3<").text(), "\\xff\\xc3&lt;");
}

TEST(HtmlTest, LetterOfOtherScriptsStay)
{
    EXPECT_EQ(Html("Gerät 漢").text(), "Gerät 漢");
}

TEST(HtmlTest, AnElementHasItsAttributesAndItsContent)
{
    const Html inner = element("b", Html("<"));
    EXPECT_EQ(element("td", {{"class", "odd"}, {"hidden"}}, inner).text(), "<td class=\"odd\" hidden><b>&lt;</b></td>");
}

TEST(HtmlTest, AnAttributeEndsWhereItShould)
{
    EXPECT_EQ(element("i", {{"title", "\"><script>"}}, Html()).text(), "<i title=\"&quot;&gt;&lt;script&gt;\"></i>");
}

TEST(HtmlTest, AnAttributeWithoutNameIsLeftOut)
{
    EXPECT_EQ(element("i", {{"", "odd"}}, Html()).text(), "<i></i>");
}

} // namespace

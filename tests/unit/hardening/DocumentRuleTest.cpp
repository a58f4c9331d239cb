// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/DocumentRule.h"

#include <gtest/gtest.h>
#include <string>

namespace
{

const std::string foreign = "its encoding is not UTF-8";

std::string objection(std::string_view document)
{
    const char* found = objectionTo(document);
    return found != nullptr ? found : "";
}

std::string declared(const std::string& attributes)
{
    return "<?xml version=\"1.0\" " + attributes + "?><RebootCard/>";
}

} // namespace

TEST(DocumentRuleTest, ADocumentWithoutADeclarationMayBeParsed)
{
    EXPECT_EQ(objection("<RebootCard From=\"a\" To=\"b\"/>"), "");
    EXPECT_EQ(objection(""), "");
    EXPECT_EQ(objection("nothing of the kind"), "");
}

TEST(DocumentRuleTest, Utf8MayBeDeclaredInAnyWay)
{
    EXPECT_EQ(objection(declared("")), "");
    EXPECT_EQ(objection(declared("encoding=\"UTF-8\"")), "");
    EXPECT_EQ(objection(declared("encoding = \n'utf-8' standalone='yes'")), "");
    EXPECT_EQ(objection("\xEF\xBB\xBF" + declared("encoding=\"utf-8\"")), "");
}

TEST(DocumentRuleTest, AnotherEncodingMayNotBeDeclared)
{
    for (const char* other :
         {"\"ISO-8859-1\"", "'UTF-16'", "\"UTF-88\"", "\"UTF-7\"", "\"\"", "\"UTF-8'", "UTF-8", "\"UTF8\""}) {
        EXPECT_EQ(objection(declared(std::string("encoding=") + other)), foreign) << other;
    }
}

TEST(DocumentRuleTest, AnEncodingCannotHideBehindABadDeclaration)
{
    EXPECT_EQ(objection("<?xml encoding=\"SJIS\"?><a/>"), foreign);
    EXPECT_EQ(objection("<?xml encoding=\"UTF-8\" encoding=\"SJIS\"?><a/>"), foreign);
    EXPECT_EQ(objection("<?xml version=\"1.0\" encoding=\"SJIS\"><a/>"), foreign);
    EXPECT_EQ(objection("<?xml version=\"1.0\" encoding"), foreign);
    EXPECT_EQ(objection("\xEF\xBB\xBF<?xml encoding=\"SJIS\"?><a/>"), foreign);
}

TEST(DocumentRuleTest, TheWordEncodingMayStandInADocument)
{
    EXPECT_EQ(objection("<RebootCard From=\"encoding\"/>"), "");
    EXPECT_EQ(objection(declared("") + "<a encoding=\"SJIS\"/>"), "");
}

TEST(DocumentRuleTest, TheFirstBytesOfOtherEncodingsAreRefused)
{
    EXPECT_EQ(objection("\xFE\xFF<"), foreign);
    EXPECT_EQ(objection("\xFF\xFE<"), foreign);
    EXPECT_EQ(objection("\x4C\x6F\xA7\x94"), foreign);
}

TEST(DocumentRuleTest, ADocumentTypeDeclarationIsRefused)
{
    EXPECT_EQ(objection("<!DOCTYPE a><a/>"), "it has a document type declaration");
    EXPECT_EQ(objection(declared("") + "<!DOCTYPE a [<!ENTITY x \"y\">]>"), "it has a document type declaration");
}

TEST(DocumentRuleTest, WhatStandsBehindTheFirstNulIsNotLookedAt)
{
    EXPECT_EQ(objection(std::string_view("<a/>\0<!DOCTYPE a>", 17)), "");
}

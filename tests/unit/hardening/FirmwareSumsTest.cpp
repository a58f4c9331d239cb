// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "hardening/FirmwareSums.h"

#include <gtest/gtest.h>

namespace
{

using Texts = std::vector<std::string>;

const std::string someDigest(64, 'a');

Texts pathsIn(const std::string& text)
{
    Texts paths;
    for (const FileSum& sum : readSums(text).files) {
        EXPECT_EQ(sum.digest, someDigest);
        paths.push_back(sum.path);
    }
    return paths;
}

std::size_t strangeLineIn(const std::string& text)
{
    return readSums(text).strangeLine;
}

} // namespace

TEST(FirmwareSumsTest, EachLineIsASumAndAPath)
{
    const std::string text = someDigest + "  pnr/kernel\n" + someDigest + " *./a b\n" + someDigest + "  last";
    EXPECT_EQ(pathsIn(text), (Texts{"pnr/kernel", "a b", "last"}));
    EXPECT_EQ(strangeLineIn(text), 0U);
    EXPECT_EQ(strangeLineIn(""), 0U);
}

TEST(FirmwareSumsTest, TheFirstLineThatIsNoSumIsTold)
{
    const std::string good = someDigest + "  good\n";
    for (const std::string& strange :
         {std::string(), someDigest, someDigest + "  ", someDigest + " x", someDigest + "a  x",
          someDigest.substr(1) + "   x", std::string(64, 'A') + "  x", std::string(64, 'g') + "  x",
          "\\" + someDigest + "  x", someDigest + "\t\tx", "SHA256 (x) = " + someDigest}) {
        const std::string text = good + strange + "\n" + strange + "\n" + good;
        EXPECT_EQ(strangeLineIn(text), 2U) << strange;
        EXPECT_EQ(pathsIn(text), (Texts{"good", "good"})) << strange;
    }
}

TEST(FirmwareSumsTest, WhatIsSignedHasBothFiles)
{
    EXPECT_TRUE(hasSignature({"x", "SHA256SUMS.sig", "SHA256SUMS"}));
    EXPECT_FALSE(hasSignature({"x", "SHA256SUMS.sig"}));
    EXPECT_FALSE(hasSignature({"x", "SHA256SUMS"}));
    EXPECT_FALSE(hasSignature({"d/SHA256SUMS", "d/SHA256SUMS.sig"}));
}

TEST(FirmwareSumsTest, AllOthersHaveToBeListed)
{
    const FirmwareSums sums = readSums(someDigest + "  ./d/f\n" + someDigest + "  g\n");
    EXPECT_EQ(unlistedOf({"g", "d/f", "SHA256SUMS", "SHA256SUMS.sig"}, sums), Texts{});
    EXPECT_EQ(unlistedOf({"f", "d/f", "d/g"}, sums), (Texts{"f", "d/g"}));
    const ListedFiles listing(sums);
    EXPECT_TRUE(listing.has("g") && listing.has("d/f") && listing.has("SHA256SUMS"));
    EXPECT_FALSE(listing.has("f") || listing.has("d/g"));
}

TEST(FirmwareSumsTest, OnlyTheStartOfAPathIsLeftOut)
{
    EXPECT_EQ(withoutStart("././d/./f"), "d/./f");
    EXPECT_EQ(withoutStart(".d/f"), ".d/f");
}

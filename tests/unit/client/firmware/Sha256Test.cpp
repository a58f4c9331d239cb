// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Sha256.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace
{

std::string digestOf(std::string_view text)
{
    Sha256 digest;
    digest.add(std::as_bytes(std::span(text)));
    return digest.finish();
}

} // namespace

TEST(Sha256, OfNothing)
{
    EXPECT_EQ(digestOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(Sha256, OfOneBlock)
{
    EXPECT_EQ(digestOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Sha256, OfATextWhosePaddingNeedsASecondBlock)
{
    EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST(Sha256, OfAMillionLetters)
{
    EXPECT_EQ(digestOf(std::string(1000000, 'a')), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, OfPiecesIsThatOfTheWhole)
{
    Sha256 digest;
    for (const std::string_view piece : {"a", "", "bc"}) {
        digest.add(std::as_bytes(std::span(piece)));
    }
    EXPECT_EQ(digest.finish(), digestOf("abc"));
}

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
    return inHexadecimal(digest.finish());
}

} // namespace

TEST(Sha256Test, OfNothing)
{
    EXPECT_EQ(digestOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(Sha256Test, OfOneBlock)
{
    EXPECT_EQ(digestOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(Sha256Test, OfATextWhosePaddingNeedsASecondBlock)
{
    EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST(Sha256Test, OfLengthsThatAlmostFillABlock)
{
    EXPECT_EQ(digestOf(std::string(55, 'a')), "9f4390f8d30c2dd92ec9f095b65e2b9ae9b0a925a5258e241c9f1e910f734318");
    EXPECT_EQ(digestOf(std::string(63, 'a')), "7d3e74a05d7db15bce4ad9ec0658ea98e3f06eeecf16b4c6fff2da457ddc2f34");
    EXPECT_EQ(digestOf(std::string(64, 'a')), "ffe054fe7ae0cb6dc65c3af9b61d5209f439851db43d0ba5997337df154668eb");
    EXPECT_EQ(digestOf(std::string(119, 'a')), "31eba51c313a5c08226adf18d4a359cfdfd8d2e816b13f4af952f7ea6584dcfb");
}

TEST(Sha256Test, OfAMillionLetters)
{
    EXPECT_EQ(digestOf(std::string(1000000, 'a')), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256Test, OfPiecesIsThatOfTheWhole)
{
    Sha256 digest;
    for (const std::string_view piece : {"a", "", "bc"}) {
        digest.add(std::as_bytes(std::span(piece)));
    }
    EXPECT_EQ(inHexadecimal(digest.finish()), digestOf("abc"));
}

TEST(Sha256Test, IsTheSameWhereverTheTextIsCut)
{
    const std::string text(200, 'x');
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        Sha256 digest;
        digest.add(std::as_bytes(std::span(text).first(cut)));
        digest.add(std::as_bytes(std::span(text).subspan(cut)));
        EXPECT_EQ(inHexadecimal(digest.finish()), digestOf(text)) << cut;
    }
}

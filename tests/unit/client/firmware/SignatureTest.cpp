// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/firmware/Signature.h"

#include "../FailureOf.h"
#include "ProgramsFixture.h"
#include "TextFiles.h"

namespace
{

using Texts = std::vector<std::string>;

const std::string goodKey = "untrusted comment: maker public key\nRW" + std::string(54, 'A') + "\n";

class SignatureTest : public ProgramsFixture
{
protected:
    SignatureTest() { install("usign", "exit 0"); }

    void pack(const std::string& sums)
    {
        putFile(contents, "./pnr/kernel", "KERN-7");
        putFile(contents, "pnr/image", "");
        putFile(contents, "SHA256SUMS", sums);
        putFile(contents, "SHA256SUMS.sig", "signature");
    }

    [[nodiscard]] Texts problems() const { return SignatureKey("maker.pub", goodKey).problemsWith(contents); }

    static std::string refusalOf(const std::string& key)
    {
        const Failure failure = failureOf([&] { const SignatureKey made("maker.pub", key); });
        EXPECT_TRUE(failure.code == ExitCode::badFile || failure.code == ExitCode::ok);
        return failure.hint;
    }

    const std::string kernelSum = digestOfText("KERN-7") + "  pnr/kernel\n";
    const std::string imageSum = digestOfText("") + "  pnr/image\n";
    Contents contents = contentsForSignature();
};

} // namespace

TEST_F(SignatureTest, AcceptsWhatIsSignedAndListed)
{
    pack(kernelSum + imageSum);
    EXPECT_EQ(problems(), Texts{});
}

TEST_F(SignatureTest, GivesTheToolTheSumsTheSignatureAndTheKey)
{
    install("usign", "echo \"$1 $2 $3 $5 $7\" >" + file("words") + "\ncat \"$4\" \"$6\" \"$8\" >" + file("read"));
    const Environment path("PATH", directory + ":/usr/bin:/bin");
    pack(kernelSum + imageSum);
    EXPECT_EQ(problems(), Texts{});
    EXPECT_EQ(read("words"), "-V -q -m -x -p\n");
    EXPECT_EQ(read("read"), kernelSum + imageSum + "signature" + goodKey);
}

TEST_F(SignatureTest, RefusesWhatTheKeyHasNotSigned)
{
    pack(kernelSum + imageSum);
    install("usign", "exit 1");
    EXPECT_EQ(problems(), Texts{"maker.pub has not signed its SHA256SUMS"});
    install("usign", "echo 'checked against wrong key' >&2; exit 1");
    EXPECT_EQ(problems(), Texts{"maker.pub has not signed its SHA256SUMS (checked against wrong key)"});
    install("usign", "kill -9 $$");
    EXPECT_EQ(problems(), Texts{"whether maker.pub has signed its SHA256SUMS is not known: " + file("usign") +
                                " could not be run to its end"});
}

TEST_F(SignatureTest, RefusesWhatIsNotSignedAtAll)
{
    putFile(contents, "pnr/kernel", "KERN-7");
    EXPECT_EQ(problems(), Texts{"it is not signed: it has no SHA256SUMS and SHA256SUMS.sig"});
}

TEST_F(SignatureTest, RefusesALinkForTheSums)
{
    pack(kernelSum + imageSum);
    contents.begin({"SHA256SUMS", MemberKind::symlink, 0, "pnr/kernel", false});
    contents.end();
    EXPECT_EQ(problems(), Texts{"its SHA256SUMS or SHA256SUMS.sig is no plain file of at most 4194304 bytes"});
}

TEST_F(SignatureTest, RefusesAListThatIsTooLong)
{
    std::string sums;
    while (sums.size() <= Contents::longestText) {
        sums += kernelSum + imageSum;
    }
    pack(sums.substr(0, sums.size() - kernelSum.size() - imageSum.size()));
    EXPECT_EQ(problems(), Texts{});
    pack(sums);
    EXPECT_EQ(problems(), Texts{"its SHA256SUMS or SHA256SUMS.sig is no plain file of at most 4194304 bytes"});
}

TEST_F(SignatureTest, NamesEveryFileThatIsNotAsListed)
{
    pack(digestOfText("KERN-6") + "  ./pnr/kernel\n" + digestOfText("") + "  pnr/missing\n");
    EXPECT_EQ(problems(),
              (Texts{"pnr/image is not in its SHA256SUMS", "pnr/kernel has another sum than in its SHA256SUMS",
                     "pnr/missing is in its SHA256SUMS, but is no file in the archive"}));
}

TEST_F(SignatureTest, RefusesALineThatIsNoSum)
{
    pack(kernelSum + "# made by hand\n" + imageSum);
    EXPECT_EQ(problems(), Texts{"line 2 of its SHA256SUMS is none that sha256sum writes"});
}

TEST_F(SignatureTest, TakesTheToolThatIsThere)
{
    pack(kernelSum + imageSum);
    install("signify-openbsd", "exit 1");
    EXPECT_EQ(problems(), Texts{}); // usign comes first
    std::filesystem::remove(file("usign"));
    EXPECT_EQ(problems(), Texts{"maker.pub has not signed its SHA256SUMS"});
    std::filesystem::remove(file("signify-openbsd"));
    EXPECT_TRUE(refusalOf(goodKey).starts_with("neither usign nor signify-openbsd is installed"));
}

TEST_F(SignatureTest, TakesOnlyAPublicKeyForAKey)
{
    EXPECT_EQ(refusalOf(goodKey), "");
    EXPECT_EQ(refusalOf(goodKey.substr(0, goodKey.size() - 1)), "");
    const std::string start = "untrusted comment: x\n";
    for (const std::string& broken :
         {std::string(), start, start + "RW" + std::string(53, 'A'), start + "RW" + std::string(54, 'A') + "\nmore",
          start + "RW" + std::string(53, 'A') + "!", start + std::string(56, 'A'), "comment\nRW" + std::string(54, 'A'),
          "untrusted comment: " + std::string(60, 'A')}) {
        EXPECT_EQ(refusalOf(broken), "maker.pub is no public key as \"usign -G -p\" makes it") << broken;
    }
}

// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "client/cli/Document.h"

#include "unit/client/FailureOf.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace
{

TEST(DocumentOptionTest, TakesAWordThatIsAFormatForOne)
{
    for (const std::string& word : formats()) {
        DocumentOption option{word};
        std::string format(defaultFormat);
        option.settle(format);
        EXPECT_EQ(format, word);
        EXPECT_FALSE(option.file);
    }
}

TEST(DocumentOptionTest, TakesAnyOtherForAFile)
{
    for (const char* word : {"cards.prom", "./json", "json.html", "xml"}) {
        DocumentOption option{word};
        std::string format(defaultFormat);
        option.settle(format);
        EXPECT_EQ(format, defaultFormat) << word;
        EXPECT_EQ(option.file, word);
    }
}

TEST(DocumentOptionTest, LeavesTheFormatOfTheProgramAlone)
{
    std::string format = "csv";
    DocumentOption().settle(format);
    EXPECT_EQ(format, "csv");
}

TEST(DocumentOptionTest, RefusesAFormatBesidesAFile)
{
    DocumentOption option{"cards.prom"};
    std::string format = "json";
    EXPECT_EQ(failureOf([&] { option.settle(format); }).code, ExitCode::usage);
}

std::string written(const DocumentOption& place, ExitCode code)
{
    const auto namesOf = [](const std::vector<Result>& results) {
        std::string names;
        for (const Result& result : results) {
            names += result.target + "\n";
        }
        return names;
    };
    testing::internal::CaptureStdout();
    const std::unique_ptr<Writer> writer = makeDocumentWriter(place, namesOf);
    writer->begin("report", {});
    for (const char* name : {"card1", "card2"}) {
        Result result;
        result.target = name;
        writer->add(result);
    }
    writer->end(code);
    return testing::internal::GetCapturedStdout();
}

TEST(DocumentWriterTest, PrintsWhatIsMadeOfAllResults)
{
    EXPECT_EQ(written({}, ExitCode::ok), "card1\ncard2\n");
    EXPECT_EQ(written({"-"}, ExitCode::mixed), "card1\ncard2\n");
}

TEST(DocumentWriterTest, WritesItToAFile)
{
    std::string folder = testing::TempDir() + "document-XXXXXX";
    ASSERT_NE(::mkdtemp(folder.data()), nullptr);
    EXPECT_EQ(written({folder + "/text"}, ExitCode::noAnswer), "");
    EXPECT_EQ(std::filesystem::file_size(folder + "/text"), 12U);
    std::filesystem::remove_all(folder);
}

TEST(DocumentWriterTest, DeliversNothingOfAnInterruptedRun)
{
    EXPECT_EQ(written({}, ExitCode::interrupted), "");
}

} // namespace

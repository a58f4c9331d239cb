// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: The tarveld authors
#include "services/TimeReferenceMessages.h"
#include "support/SystemTest.h"
#include "util/Hardened.h"

#include <cstdlib>
#include <ctime>
#include <optional>

#include <syslog.h>

namespace
{

std::string element(const std::string& attributes, const std::string& name = "TimeReferenceConfiguration")
{
    return "<" + name + " " + attributes + "/>";
}

std::string manualAt(const std::string& dateTime)
{
    return element("Mode=\"Manual\" NtpServer=\"10.1.2.3\" DateTime=\"" + dateTime + "\"");
}

const std::string valid = "Mode=\"Manual\" NtpServer=\"10.1.2.3\" DateTime=\"2021-03-04T05:06:07\"";

class LocalTimeZone
{
public:
    explicit LocalTimeZone(const char* name)
    {
        if (const char* value = std::getenv("TZ"); value != nullptr) {
            before = value;
        }
        setenv("TZ", name, 1);
        tzset();
    }
    ~LocalTimeZone()
    {
        before ? setenv("TZ", before->c_str(), 1) : unsetenv("TZ");
        tzset();
    }
    LocalTimeZone(const LocalTimeZone&) = delete;
    LocalTimeZone& operator=(const LocalTimeZone&) = delete;

private:
    std::optional<std::string> before;
};

class TimeReferenceParsingTest : public SystemTest
{
protected:
    TimeReferenceParsingTest() { uci.set("system.ntp.server", "10.1.2.3"); }

    std::time_t secondsOf(const std::string& dateTime)
    {
        EXPECT_EQ(parseTimeReferenceConfiguration(manualAt(dateTime)), 0);
        return clock.settings().empty() ? -1 : clock.settings().back().tv_sec;
    }

    void expectRefusal(const std::string& document, const std::vector<std::string>& warnings)
    {
        EXPECT_EQ(parseTimeReferenceConfiguration(document), -1);
        EXPECT_EQ(log.warnings(), warnings);
        EXPECT_EQ(log.lines().size(), warnings.size());
        EXPECT_TRUE(callsTo("flock").empty()) << "nothing may be applied";
    }

    LocalTimeZone zone{"UTC0"};
};

} // namespace

TEST_F(TimeReferenceParsingTest, TakesTheDateTimeAsUtc)
{
    EXPECT_EQ(secondsOf("2021-03-04T05:06:07"), 1614834367);
}

TEST_F(TimeReferenceParsingTest, TakesTheDateTimeAsUtcInAnyLocalWinter)
{
    const LocalTimeZone local("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(secondsOf("2021-03-04T05:06:07"), 1614834367);
}

TEST_F(TimeReferenceParsingTest, TakesTheDateTimeAsUtcInAnyLocalSummer)
{
    const LocalTimeZone local("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(secondsOf("2021-07-01T00:00:00"), 1625097600);
}

TEST_F(TimeReferenceParsingTest, IsAnHourOffInTheHourThatDaylightSavingSkips)
{
    const LocalTimeZone local("CET-1CEST,M3.5.0,M10.5.0/3");
    constexpr std::time_t halfPastTwo = 1616898600;
    EXPECT_EQ(secondsOf("2021-03-28T01:30:00"), halfPastTwo - 3600);
    EXPECT_EQ(std::abs(secondsOf("2021-03-28T02:30:00") - halfPastTwo), 3600)
        << "late or early, as the C library has it";
    EXPECT_EQ(secondsOf("2021-03-28T03:30:00"), halfPastTwo + 3600);
}

TEST_F(TimeReferenceParsingTest, CutsALateYearToTheWidthOfLongUnlessTheBuildIsHardened)
{
    constexpr std::int64_t newYear2107 = 4323283200;
    EXPECT_EQ(parseTimeReferenceConfiguration(manualAt("2107-01-01T00:00:00")), hardened ? -1 : 0);
    if (hardened) {
        EXPECT_EQ(log.lines(), (Lines{{LOG_WARNING, "DateTime is beyond what 32-bit seconds can hold"}}));
    } else {
        EXPECT_EQ(clock.settings().back().tv_sec, static_cast<long>(newYear2107));
    }
}

TEST_F(TimeReferenceParsingTest, TakesTheDateTimeAsUtcWestOfIt)
{
    const LocalTimeZone local("EST5");
    EXPECT_EQ(secondsOf("2021-03-04T05:06:07"), 1614834367);
}

TEST_F(TimeReferenceParsingTest, AcceptsNumbersWithoutLeadingZeros)
{
    EXPECT_EQ(secondsOf("2021-3-4T5:6:7"), 1614834367);
}

TEST_F(TimeReferenceParsingTest, AcceptsAnythingBehindTheSeconds)
{
    EXPECT_EQ(secondsOf("2021-03-04T05:06:07Z and more"), 1614834367);
}

TEST_F(TimeReferenceParsingTest, NormalisesThe30thOfFebruaryToThe2ndOfMarch)
{
    EXPECT_EQ(secondsOf("2021-02-30T00:00:00"), 1614643200);
}

TEST_F(TimeReferenceParsingTest, RefusesABlankInsteadOfTheT)
{
    expectRefusal(manualAt("2021-03-04 05:06:07"), {"Parsing DateTime FAILED"});
}

TEST_F(TimeReferenceParsingTest, RefusesADateTimeWithoutSeconds)
{
    expectRefusal(manualAt("2021-03-04T05:06"), {"Parsing DateTime FAILED"});
}

TEST_F(TimeReferenceParsingTest, RefusesAnEmptyDateTime)
{
    expectRefusal(manualAt(""), {"Parsing DateTime FAILED"});
}

TEST_F(TimeReferenceParsingTest, RefusesATimeThatCannotBeConverted)
{
    failNext("mktime", EOVERFLOW);
    expectRefusal(manualAt("2021-03-04T05:06:07"), {"mktime() FAILED"});
}

TEST_F(TimeReferenceParsingTest, RefusesTheLastSecondOf1969InUtc)
{
    expectRefusal(manualAt("1969-12-31T23:59:59"), {"mktime() FAILED"});
}

TEST_F(TimeReferenceParsingTest, AcceptsALongerElementName)
{
    EXPECT_EQ(parseTimeReferenceConfiguration(element(valid, "TimeReferenceConfigurationX")), 0);
}

TEST_F(TimeReferenceParsingTest, RefusesAShorterElementName)
{
    expectRefusal(element(valid, "TimeReference"),
                  {"Bad node name: \"TimeReference\" instead of \"TimeReferenceConfiguration\""});
}

TEST_F(TimeReferenceParsingTest, RefusesAnElementNameInOtherLetters)
{
    expectRefusal(element(valid, "timeReferenceConfiguration"),
                  {"Bad node name: \"timeReferenceConfiguration\" instead of \"TimeReferenceConfiguration\""});
}

TEST_F(TimeReferenceParsingTest, RefusesACommentInFrontOfTheElement)
{
    expectRefusal("<!-- first -->" + element(valid),
                  {"Bad node name: \"#comment\" instead of \"TimeReferenceConfiguration\""});
}

TEST_F(TimeReferenceParsingTest, DoesNotTestTheTypeOfAProcessingInstruction)
{
    expectRefusal("<?TimeReferenceConfiguration Mode=\"Ntp\"?>" + element(valid),
                  {"Getting Mode attribute FAILED: no error recorded",
                   "Getting NtpServer attribute FAILED: no error recorded",
                   "Getting DateTime attribute FAILED: no error recorded"});
}

TEST_F(TimeReferenceParsingTest, DoesNotTestTheTypeOfADocumentType)
{
    const Texts missing = {"Getting Mode attribute FAILED: no error recorded",
                           "Getting NtpServer attribute FAILED: no error recorded",
                           "Getting DateTime attribute FAILED: no error recorded"};
    const Texts refused = {"Document refused: it has a document type declaration"};
    expectRefusal("<!DOCTYPE TimeReferenceConfiguration>" + element(valid), hardened ? refused : missing);
}

TEST_F(TimeReferenceParsingTest, LogsEachMissingAttributeButAppliesNothing)
{
    expectRefusal(
        element("DateTime=\"2021-03-04T05:06:07\""),
        {"Getting Mode attribute FAILED: no error recorded", "Getting NtpServer attribute FAILED: no error recorded"});
}

TEST_F(TimeReferenceParsingTest, RefusesAMissingMode)
{
    expectRefusal(element("NtpServer=\"a\" DateTime=\"2021-03-04T05:06:07\""),
                  {"Getting Mode attribute FAILED: no error recorded"});
}

TEST_F(TimeReferenceParsingTest, RefusesAMissingDateTime)
{
    expectRefusal(element("Mode=\"Manual\" NtpServer=\"a\""), {"Getting DateTime attribute FAILED: no error recorded"});
}

TEST_F(TimeReferenceParsingTest, RefusesABlankDocument)
{
    EXPECT_EQ(parseTimeReferenceConfiguration("  \n"), -1);
    ASSERT_EQ(log.warnings().size(), 1U);
    EXPECT_TRUE(log.warnings().front().starts_with("xmlTextReaderRead() failed: "));
}

TEST_F(TimeReferenceParsingTest, RefusesAnEmptyDocument)
{
    EXPECT_EQ(parseTimeReferenceConfiguration(""), -1);
    ASSERT_EQ(log.warnings().size(), 1U);
    EXPECT_TRUE(log.warnings().front().starts_with("xmlTextReaderRead() failed: "));
}

TEST_F(TimeReferenceParsingTest, ReadsTheDocumentUpToItsFirstNul)
{
    EXPECT_EQ(parseTimeReferenceConfiguration(element(valid) + std::string(1, '\0') + "junk"), 0);
}

#include "support/TWText.h"

#include "support/TWLog.h"

#include <gtest/gtest.h>

TEST(TWTextTest, OneLineIsHarmlessWhateverTheBytes)
{
    const std::pair<std::string, std::string> rows[] = {
        { "", "" },
        { "plain \xC3\x84rger \xE2\x82\xAC \xF0\x9F\x98\x80", "plain \xC3\x84rger \xE2\x82\xAC \xF0\x9F\x98\x80" },
        { "two\nlines\x1B[31m\x7F", "two\u240Alines\u241B[31m\u2421" }, { std::string("nul\0", 4), "nul\u2400" },
        { "\xC2\x80-\xC2\x9B-\xC2\x9F-\xC2\xA0", "<U+0080>-<U+009B>-<U+009F>-\xC2\xA0" },
        { "\uFEFFword", "<U+FEFF>word" },
        { "\u2027\u2028\u2029\u202A\u202E\u202F", "\u2027<U+2028><U+2029><U+202A><U+202E>\u202F" },
        { "\u061C\u200D\u200E\u200F\u2010", "<U+061C>\u200D<U+200E><U+200F>\u2010" },
        { "bad\xFF\xE2\x80", "bad\uFFFD\uFFFD\uFFFD" }, { "\x9B", "\uFFFD" }, // one byte is no character
    };
    for (const auto& [bytes, expected] : rows)
        EXPECT_EQ(TWText::oneLine(bytes), expected);
    EXPECT_EQ(TWText::validUTF8("a\n\u202E\xFF"), "a\n\u202E\uFFFD");
    EXPECT_EQ(
        TWText::harmlessJSON("{\"a\":\"\u202E\xC2\x9B\x7F\xC3\x84\"}"), "{\"a\":\"\\u202e\\u009b\\u007f\xC3\x84\"}");
    TWLog::setSink({});
    testing::internal::CaptureStderr();
    TWLog::write("\x1B[31m");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "\u241B[31m\n");
}

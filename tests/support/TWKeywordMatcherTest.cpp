#include "support/TWKeywordMatcher.h"

#include <gtest/gtest.h>
#include <unicode/ucasemap.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <random>

namespace {

bool finds(const std::vector<std::string>& words, std::string_view text)
{
    return TWKeywordMatcher(words).matches(text);
}

std::string folded(const std::string& text)
{
    UErrorCode status = U_ZERO_ERROR;
    UCaseMap* map = ucasemap_open("", U_FOLD_CASE_DEFAULT, &status);
    char buffer[4096];
    const auto size
        = ucasemap_utf8FoldCase(map, buffer, sizeof buffer, text.data(), static_cast<int32_t>(text.size()), &status);
    ucasemap_close(map);
    return std::string(buffer, static_cast<std::size_t>(size));
}

std::string randomText(std::mt19937& random, std::size_t longest)
{
    static const std::vector<std::string> letters{ "a", "A", "b", "s", "S", "ß", "ẞ", "ſ", "i", "I", "İ", "ı", "\u0307",
        "σ", "Σ", "ς", "K", "k", "É", "é", "e\u0301", "料", "ﬀ", "f", "ΐ", "ж", "Ж", "資", "😀", "𐐀", "𐐨", "Ꭰ", "ꭰ" };
    std::string text;
    for (std::size_t left = random() % (longest + 1); left > 0; --left)
        text += letters[random() % letters.size()];
    return text;
}

}

TEST(TWKeywordMatcher, InvalidBytesDivideTheTextAndSpoilAWord)
{
    EXPECT_TRUE(finds({ "secret" },
        "\xff"
        "Secret\xc3"));
    EXPECT_TRUE(finds({ "é" }, "\xc3\xc3\xa9\xa9"));
    EXPECT_FALSE(finds({ "secret" }, "sec\xffret"));
    EXPECT_FALSE(finds({ "secret" }, "sec\xc3ret")); // the lead byte of a sequence that does not follow
    EXPECT_FALSE(finds({ "\xff", "a\xc3", "" },
        "\xff"
        "a\xc3"));
    EXPECT_TRUE(TWKeywordMatcher({ "", "\xff" }).empty());
    EXPECT_TRUE(finds({ std::string("a\0b", 3) }, std::string_view("A\0B", 3)));
}

TEST(TWKeywordMatcher, AgreesWithFoldingAndSearchingEachWord)
{
    std::mt19937 random(1);
    for (int round = 0; round < 400; ++round) {
        std::vector<std::string> words(round % 8 == 0 ? 3000 : 1 + random() % 8);
        for (std::string& word : words)
            word = randomText(random, words.size() > 8 ? 6 : 3);
        const TWKeywordMatcher matcher(words);
        for (int texts = 0; texts < 10; ++texts) {
            const std::string text = randomText(random, 12);
            const auto expected = std::ranges::find_if(words, [&](const std::string& word) {
                return !word.empty() && folded(text).find(folded(word)) != std::string::npos;
            });
            const auto found = matcher.firstMatch(text);
            ASSERT_EQ(found.value_or(words.size()), static_cast<std::size_t>(expected - words.begin())) << text;
            ASSERT_EQ(matcher.matches(text), found.has_value());
        }
    }
}

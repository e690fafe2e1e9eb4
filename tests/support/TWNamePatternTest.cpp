#include "support/TWNamePatterns.h"

#include <gtest/gtest.h>

TEST(TWNamePatternTest, MatchesWholeNamesByteByByte)
{
    struct Row {
        const char* pattern;
        std::vector<std::string> matching;
        std::vector<std::string> others;
    };
    const Row rows[] = {
        { "*.kdbx", { "a.kdbx", ".kdbx", "a.kdbx.kdbx", "\xff.kdbx" }, { "a.KDBX", "a.kdbx~", "kdbx" } },
        { "a?c",
            { "abc",
                "a\xff"
                "c",
                "a*c" },
            { "ac", "a\u00e4c", "abcd" } },
        { "a*b*c", { "abc", "aXbYbZc", "abbcc" }, { "acb", "abcd", "ab" } },
        { "[abc]x", { "ax", "cx" }, { "dx", "[abc]x", "x" } },
        { "[!a-c]", { "d", "!", "\xff" }, { "a", "b", "", "dd" } },
        { "[]-]", { "]", "-" }, { "", "[]-]" } },
        { "[!]]", { "a" }, { "]" } },
        { "[a-]", { "a", "-" }, { "b" } },
        { "[\x80-\xff]", { "\x90", "\xff" }, { "a" } },
        { "x[ab", { "x[ab" }, { "xa" } },
        { "[*]\\?", { "*\\a" }, { "a\\a", "*?" } },
        { "**", { "", "x", "\n" }, {} },
        { "", { "" }, { "x" } },
    };
    for (const auto& row : rows) {
        const TWNamePattern pattern(row.pattern);
        TWNamePatterns patterns;
        for (const auto* each : { "other", "*other", "other*", row.pattern, row.pattern })
            patterns.add(each);
        for (const auto& name : row.matching)
            EXPECT_TRUE(pattern.matches(name) && patterns.match(name)) << row.pattern << " " << name;
        for (const auto& name : row.others)
            EXPECT_FALSE(pattern.matches(name) || patterns.match(name)) << row.pattern << " " << name;
    }
    for (const auto* doubtful : { "[\u00e4\u00f6].kdbx", "[z-a]*", "a[!bz-a]", "[]-!]" })
        EXPECT_TRUE(TWNamePattern(doubtful).hasDoubtfulSet()) << doubtful;
    for (const auto* clear : { "\u00e4*", "[a-z][!0-9_]", "[]-]", "[z-a", "[a-a-]" })
        EXPECT_FALSE(TWNamePattern(clear).hasDoubtfulSet()) << clear;
    // Takes forever if each "*" is tried with each length.
    std::string stars;
    for (int count = 0; count < 60; ++count)
        stars += "*a";
    EXPECT_FALSE(TWNamePattern(stars + "b").matches(std::string(255, 'a')));
}

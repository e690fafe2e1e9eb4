#include "support/TWPath.h"

#include <gtest/gtest.h>

using namespace TWPath;

TEST(TWPath, CutsSlashesAndSplits)
{
    EXPECT_EQ(withoutTrailingSlashes("/a/b//"), "/a/b");
    EXPECT_EQ(withoutTrailingSlashes("//"), "/");
    EXPECT_EQ(lastComponent("/a/b"), "b");
    EXPECT_EQ(lastComponent("/a/"), "");
    EXPECT_EQ(parent("/a//b"), "/a");
    EXPECT_EQ(parent("//a"), "/");
}

TEST(TWPath, TildeStandsForTheHomeOnlyAsAWholeComponent)
{
    EXPECT_EQ(expandTilde("~", "/home/u/"), "/home/u");
    EXPECT_EQ(expandTilde("~/x", "/"), "/x");
    EXPECT_EQ(expandTilde("~u/x", "/home/u"), "~u/x");
    EXPECT_EQ(abbreviateTilde("/home/u", "/home/u"), "~");
    EXPECT_EQ(abbreviateTilde("/home/u/x", "/home/u/"), "~/x");
    EXPECT_EQ(abbreviateTilde("/home/user/x", "/home/u"), "/home/user/x");
    EXPECT_EQ(abbreviateTilde("/x", ""), "/x");
}

TEST(TWPath, StandardizesWithoutLeavingTheRootAndTellsAFolderFromItsNamesakes)
{
    EXPECT_EQ(standardize("~/a/./b//../c/", "/home/u"), "/home/u/a/c");
    EXPECT_EQ(standardize("/../../etc", "/h"), "/etc");
    EXPECT_EQ(standardize("../a/../../b", "/h"), "../../b");
    EXPECT_TRUE(isAtOrBelow("/a", "/a"));
    EXPECT_TRUE(isAtOrBelow("/a", "/"));
    EXPECT_FALSE(isAtOrBelow("/ab", "/a"));
    EXPECT_FALSE(isAtOrBelow("/", "/a"));
}

#include "editors/TWLogsTree.h"

#include "builders/TWLogsText.h"

#include <gtest/gtest.h>

namespace {

class TWLogsTreeTest : public testing::Test {
protected:
    // The saved nodes merged with what is on the disk.
    std::string merged(const std::string& saved, const std::string& disk)
    {
        tree.load(TWLogsText::records(saved));
        tree.merge(TWLogsText::fresh(disk), [](const TWLogsNode&) { return TWLogsNode::State::Vanished; });
        return TWLogsText::text(tree);
    }
    std::string afterClick(const std::string& path, std::int64_t value)
    {
        tree.click(*tree.find(path), value);
        return TWLogsText::text(tree);
    }
    std::string saved() const
    {
        TWLogsTree read("/var/log");
        std::vector<TWLogsRecord> records;
        for (const auto& record : tree.cleanedArrayFrom())
            records.push_back(*TWLogsRecord::from(record.value()));
        read.load(records);
        return TWLogsText::text(read);
    }

    TWLogsTree tree{ "/var/log" };
};

constexpr auto Disk = "[ ] User Logs/\n"
                      "  [ ] a/\n"
                      "    [ ] deep/\n"
                      "      [ ] 1\n"
                      "      [ ] 2\n"
                      "    [ ] x\n"
                      "  [ ] b\n"
                      "[ ] System Logs/\n"
                      "  [ ] syslog\n";

TEST_F(TWLogsTreeTest, AFreshTreeHasNothingChecked)
{
    EXPECT_EQ(merged("", Disk), Disk);
}

TEST_F(TWLogsTreeTest, SavedNodesComeFirstAsTheyWereAndWhatIsNewIsUncheckedAfterThem)
{
    EXPECT_EQ(merged("[-] System Logs/\n"
                     "  [x] syslog\n"
                     "  [x] lost/\n"
                     "    [x] in it\n",
                  Disk),
        "[-] System Logs/\n"
        "  [x] syslog\n"
        "  [x] lost/ gone\n"
        "    [x] in it gone\n"
        "[ ] User Logs/\n"
        "  [ ] a/\n"
        "    [ ] deep/\n"
        "      [ ] 1\n"
        "      [ ] 2\n"
        "    [ ] x\n"
        "  [ ] b\n");
    // Twice the same path, a file that is a folder by now and a folder that is a file, and states of a later version.
    EXPECT_EQ(merged("[-] User Logs/\n"
                     "  [5] b/\n"
                     "    [x] inside\n"
                     "  [-] a/\n"
                     "    [x] deep\n"
                     "  [x] copy=~/a/\n",
                  Disk),
        "[-] User Logs/\n"
        "  [5] b/\n"
        "    [x] inside gone\n"
        "  [-] a/\n"
        "    [x] deep\n"
        "    [ ] x\n"
        "  [x] copy/\n"
        "    [ ] deep/\n"
        "      [ ] 1\n"
        "      [ ] 2\n"
        "    [ ] x\n"
        "[ ] System Logs/\n"
        "  [ ] syslog\n");
    EXPECT_EQ(tree.find("~/a/deep")->bytes, 2U) << "a folder that stays a leaf has its size";
    EXPECT_EQ(tree.checkedBytes(), 2U + 3U);
}

TEST_F(TWLogsTreeTest, AClickClearsWhatIsBelowAndOnlyMixesWhatIsAbove)
{
    merged("", Disk);
    afterClick("~/a/deep/1", 1);
    EXPECT_EQ(afterClick("~/a/deep/2", 1),
        "[-] User Logs/\n"
        "  [-] a/\n"
        "    [-] deep/\n"
        "      [x] 1\n"
        "      [x] 2\n"
        "    [ ] x\n"
        "  [ ] b\n"
        "[ ] System Logs/\n"
        "  [ ] syslog\n");
    EXPECT_EQ(tree.checkedBytes(), 2U);
    afterClick("~/a/deep/2", 0);
    EXPECT_EQ(tree.find(std::string(TWAllUserLogs))->active, -1);
    EXPECT_EQ(afterClick("~/a/deep/1", 0), Disk);

    afterClick("~/a/deep/1", 1);
    EXPECT_EQ(afterClick("~/a", -1),
        "[-] User Logs/\n"
        "  [x] a/\n"
        "    [ ] deep/\n"
        "      [ ] 1\n"
        "      [ ] 2\n"
        "    [ ] x\n"
        "  [ ] b\n"
        "[ ] System Logs/\n"
        "  [ ] syslog\n");
    EXPECT_EQ(tree.checkedBytes(), 3U);
    EXPECT_TRUE(TWLogsTree::hasActiveParent(*tree.find("~/a/deep/1")));
    EXPECT_FALSE(TWLogsTree::hasActiveParent(*tree.find("~/a")));
    EXPECT_EQ(saved(), "[-] User Logs/\n  [x] a/\n");
    EXPECT_EQ(afterClick("/var/log", 1).substr(0, 14), "[-] User Logs/");
    EXPECT_EQ(saved(), "[-] User Logs/\n  [x] a/\n[x] System Logs/\n");
}

TEST_F(TWLogsTreeTest, OnlyWhatIsChosenIsSavedAndNothingBelowWhatIsNot)
{
    merged("[-] User Logs/\n"
           "  [7] b\n"
           "  [ ] a/\n"
           "    [x] x\n"
           "  [x] lost/\n"
           "    [x] in it\n"
           "    [ ] other\n",
        Disk);
    EXPECT_EQ(saved(), "[-] User Logs/\n  [7] b\n  [x] lost/\n    [x] in it\n");
}

}

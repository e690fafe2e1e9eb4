#include "cleaners/TWLogsCleaner.h"

#include "builders/TWLogsText.h"
#include "fakes/TWRecordingCleanerDelegate.h"

namespace {

class TWLogsCleanerTest : public TWCleanerTest<TWLogsCleaner> {
protected:
    static constexpr auto Started = "started: Cleaning logs...";
    static constexpr auto Success = "success: Logs have been cleaned.";
    static constexpr auto Failure = "failure: Some logs could not be cleaned!";

    TWLogsCleanerTest()
    {
        logSources.sources
            = { { "One", places.home + "/logs", true }, { "X", places.home + "/.xsession-errors", false } };
    }
    void makeLogs() const
    {
        for (const auto* name : { "home/logs/a", "home/logs/.hidden", "home/logs/folder/inside", "home/precious/file",
                 "home/.xsession-errors", "var/log/syslog" })
            root.write(name, "x");
        if (!root.exists("home/logs/link"))
            root.link("home/logs/link", root.path("home/precious"));
    }
    void check(const std::string& text)
    {
        cleaner.setInfo({ std::make_shared<std::vector<TWLogsRecord>>(TWLogsText::records(text)), "" });
    }
    // What a job gives to the deletion tool.
    Lines deleted(const std::string& text)
    {
        makeLogs();
        check(text);
        reports.lines.clear();
        launcher.records.clear();
        cleaner.clean();
        runLoop.advance(1s);
        std::sort(launcher.records.begin(), launcher.records.end());
        return launcher.records;
    }
};

TEST_F(TWLogsCleanerTest, WhatIsCheckedIsDeletedAndARootLosesItsEntriesNotItself)
{
    constexpr auto Logs = "/bin/rm -rf ROOT/home/logs/./";
    EXPECT_EQ(deleted("[x] User Logs/\n"),
        (Lines{ "/bin/rm -rf ROOT/home/./.xsession-errors", std::string(Logs) + ".hidden", std::string(Logs) + "a",
            std::string(Logs) + "folder", std::string(Logs) + "link" }));
    EXPECT_EQ(deleted("[x] System Logs/\n"), (Lines{ "/bin/rm -rf ROOT/var/log/./syslog" }));
    EXPECT_EQ(deleted("[-] User Logs/\n  [-] logs/\n    [x] a\n    [ ] folder/\n      [x] inside\n"),
        (Lines{ "/bin/rm -rf ROOT/home/logs/./a", "/bin/rm -rf ROOT/home/logs/folder/./inside" }));
    EXPECT_EQ(deleted("[-] User Logs/\n  [x] logs/\n"), (Lines{ "/bin/rm -rf ROOT/home/./logs" }));
    EXPECT_EQ(deleted("[-] User Logs/\n"), Lines());
    EXPECT_EQ(reports.take(), (Lines{ Started, Success, "finished" }));
    EXPECT_NE(cleaner.validate(), "");
    check("[x] User Logs/\n");
    EXPECT_EQ(cleaner.validate(), "");
}

TEST_F(TWLogsCleanerTest, NothingOutsideOfTheLogFoldersIsDeletedWhateverTheListSays)
{
    const auto at = [](const std::string& path) { return "[x] hand-made=" + path + "\n"; };
    EXPECT_EQ(deleted(at("~/precious") + at("~/logs/../precious") + at("~/logs/./a") + at("~/logs/link/file") + at("")
                  + at("relative") + at(places.systemLogs) + at("~/logs/gone") + at("~/logs/gone/deeper")),
        (Lines{ "/bin/rm -rf ROOT/home/logs/./gone" }));
    EXPECT_EQ(cleaner.outcome().gone, 0U) << "it was not there before";
    constexpr auto Outside = "it does not lie in a log folder.";
    const auto refused = [](const std::string& path, const std::string& why) {
        return "- Refused to delete \"" + path + "\": " + why;
    };
    EXPECT_EQ(reports.take(),
        (Lines{ Started, refused("ROOT/home/precious", Outside),
            refused("ROOT/home/precious", "its path is not written out."),
            refused("ROOT/home/logs/a", "its path is not written out."),
            refused("ROOT/home/logs/link/file", "a link leads there from its log folder."), refused("", Outside),
            refused("relative", Outside), refused("ROOT/var/log", Outside),
            "- Item ROOT/home/logs/gone/deeper already deleted", "- Delete ROOT/home/logs/gone ...", Failure,
            "finished" }));
}

TEST_F(TWLogsCleanerTest, ADeletedLogThatAProgramHoldsOpenIsNamed)
{
    const auto folder = places.home + "/logs/";
    makeLogs();
    const auto a = fileSystem.look(folder + "a").facts.identity;
    openFiles.files = { { folder + "a", a, 4096, { "one", "two" } }, { folder + "a", {}, 1, { "of an earlier file" } },
        { folder + "folder/inside", {}, 8192, { "one" } }, { folder + "another", {}, 1, { "one" } } };
    deleted("[-] User Logs/\n  [-] logs/\n    [x] a\n    [x] folder/\n");
    EXPECT_EQ(reports.take(),
        (Lines{ Started, "- Delete ROOT/home/logs/a ...", "- Delete ROOT/home/logs/folder ...",
            "- \"ROOT/home/logs/a\" is still open in one, two. Its space (4.1 kB) is freed when those programs end.",
            "- \"ROOT/home/logs/folder/inside\" is still open in one. Its space (8.2 kB) is freed when that program "
            "ends.",
            Success, "finished" }));
}

}

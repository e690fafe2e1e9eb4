#include "deletion/TWFileDeleter.h"

#include "fakes/TWFakeMachine.h"
#include "support/TWLog.h"

namespace {

class TWFileDeleterTest : public testing::Test, protected TWFakeMachine, protected TWFileDeleterDelegate {
protected:
    TWFileDeleterTest() { deleter.setDelegate(this); }
    void fileDeleterDone() override { ++doneCalls; }
    std::string deleteFile(
        const std::string& path, TWSecureMode mode = TWPlainDelete, TWWaiting waiting = TWWaiting::Asynchronously)
    {
        return deleter.deleteFile(target(path), mode, waiting, TWAuthorization::Yes);
    }

    TWFileDeleter deleter{ tools };
    int doneCalls = 0;
};

}

TEST_F(TWFileDeleterTest, EachModeHasItsCommandLineAndLabel)
{
    Lines labels;
    places.rmOptions = { "--one" };
    for (const int mode : { -1, 0, 1, 2, 5, -2 })
        labels.push_back(deleteFile(root.path("x y"), mode, TWWaiting::UntilDone));
    EXPECT_EQ(launcher.records,
        (Lines{ "/bin/rm -rf --one ROOT/./x y", "/libexec/srm -rf --simple ROOT/./x y",
            "/libexec/srm -rf --medium ROOT/./x y", "/libexec/srm -rf ROOT/./x y", "/libexec/srm -rf ROOT/./x y",
            "/libexec/srm -rf ROOT/./x y" }));
    EXPECT_EQ(
        labels, (Lines{ "Delete", "One-pass secure delete", "7-pass secure delete", "35-pass secure delete", "", "" }));
    EXPECT_EQ(doneCalls, 6);
    deleteFile(places.home, TWPlainDelete, TWWaiting::UntilDone);
    EXPECT_EQ(doneCalls, 7) << "a refused path is waited for in the same way";
    EXPECT_EQ(launcher.records.size(), 6U);
}

TEST_F(TWFileDeleterTest, WhileBusyItRefusesLoudly)
{
    launcher.ending = TWRecordingLauncher::Ending::ByTest;
    EXPECT_EQ(deleteFile(root.path("first")), "Delete");
    int logged = 0;
    TWLog::setSink([&logged](std::string_view) { ++logged; });
    EXPECT_EQ(deleteFile(root.path("second")), "");
    TWLog::setSink({});
    EXPECT_EQ(logged, 1);
    EXPECT_EQ(launcher.running(), 1U);
    EXPECT_TRUE(doneCalls == 0 && deleter.deleting());
    launcher.endAll();
    EXPECT_TRUE(doneCalls == 1 && !deleter.deleting());
}

TEST_F(TWFileDeleterTest, TerminateEndsTheChildOnceAlsoOneThatDoesNotListen)
{
    launcher.ending = TWRecordingLauncher::Ending::ByTest;
    deleter.terminate();
    for (const bool deaf : { false, true }) {
        launcher.deaf = deaf;
        deleteFile(root.path("file"));
        deleter.terminate();
        EXPECT_EQ(doneCalls, 0) << "always on a later turn";
        runLoop.advance(1s);
        EXPECT_EQ(doneCalls, 1);
        doneCalls = 0;
    }
    EXPECT_EQ(launcher.records,
        (Lines{ "/bin/rm -rf ROOT/./file", "terminate", "/bin/rm -rf ROOT/./file", "terminate", "kill" }));
    ASSERT_EQ(deleter.report().problems.size(), 1U);
    EXPECT_EQ(deleter.report().problems[0].text, "The deletion tool /bin/rm was ended by signal 9.");
}

TEST_F(TWFileDeleterTest, SearchesAFolderForKeptNamesBeforeTheChildStarts)
{
    guard.setKeepList(TWKeepList({ { TWKeepEntry::Kind::Names, "*.kdbx" } }));
    const auto folder = root.folder("home/folder/inner");
    const auto parent = root.path("home/folder");
    deleteFile(parent);
    EXPECT_TRUE(launcher.records.empty()) << "not on the main thread";
    // What changes during the search is noticed: here the list, then the folder.
    guard.setKeepList(TWKeepList({ { TWKeepEntry::Kind::Names, "inner" } }));
    runLoop.runUntilIdle();
    EXPECT_EQ(launcher.shown(deleter.report().problems.at(0).text),
        "Refused to delete \"ROOT/home/folder\": it holds \"inner\", and names like \"inner\" are on the keep list.");
    guard.setKeepList(TWKeepList({ { TWKeepEntry::Kind::Names, "*.kdbx" } }));
    std::filesystem::rename(parent, root.path("home/moved"));
    root.write("home/folder/a.kdbx", "");
    guard.rules()->prepare();
    deleteFile(root.path("home/moved"));
    runLoop.turn(0ms); // the search comes to its end
    std::filesystem::remove(root.path("home/moved/inner"));
    std::filesystem::remove(root.path("home/moved"));
    std::filesystem::rename(parent, root.path("home/moved"));
    runLoop.runUntilIdle();
    EXPECT_EQ(doneCalls, 2);
    EXPECT_TRUE(launcher.records.empty()) << launcher.records[0];
    std::filesystem::remove(root.path("home/moved/a.kdbx"));
    deleteFile(root.path("home/moved"), TWPlainDelete, TWWaiting::UntilDone);
    EXPECT_EQ(launcher.records, Lines{ "/bin/rm -rf ROOT/home/./moved" });
    EXPECT_EQ(doneCalls, 3);
}

TEST_F(TWFileDeleterTest, WhatIsKeptAndWasMovedIntoTheFolderStaysThere)
{
    root.write("home/folder/inner/x", "");
    root.write("home/kept/x", "");
    guard.setKeepList(TWKeepList({ { TWKeepEntry::Kind::Path, "~/kept" } }));
    deleteFile(root.path("home/folder/inner"));
    EXPECT_TRUE(launcher.records.empty()) << "looks at kept paths, but not on the main thread";
    runLoop.runUntilIdle();
    EXPECT_EQ(launcher.records.size(), 1U);
    std::filesystem::rename(root.path("home/kept"), root.path("home/folder/kept"));
    deleteFile(root.path("home/folder"));
    runLoop.runUntilIdle();
    EXPECT_EQ(launcher.records.size(), 1U);
    EXPECT_NE(deleter.report().problems.at(0).text.find("has been moved."), std::string::npos);
}

TEST_F(TWFileDeleterTest, TheSearchCanBeEndedOrDestroyed)
{
    guard.setKeepList(TWKeepList({ { TWKeepEntry::Kind::Names, "*.kdbx" } }));
    const auto folder = root.folder("home/folder");
    deleteFile(folder);
    deleter.terminate();
    deleter.terminate();
    EXPECT_EQ(doneCalls, 0) << "always on a later turn";
    runLoop.runUntilIdle();
    EXPECT_EQ(doneCalls, 1);
    EXPECT_EQ(launcher.shown(deleter.report().problems.at(0).text),
        "\"ROOT/home/folder\" was left alone, because the deletion was ended.");
    {
        TWFileDeleter another(tools);
        another.setDelegate(this);
        another.deleteFile(target(folder), TWPlainDelete, TWWaiting::Asynchronously, TWAuthorization::No);
    }
    runLoop.runUntilIdle();
    EXPECT_EQ(doneCalls, 1);
    EXPECT_TRUE(launcher.records.empty());
}

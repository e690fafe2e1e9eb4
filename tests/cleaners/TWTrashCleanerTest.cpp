#include "cleaners/TWTrashCleaner.h"

#include "fakes/TWFakeMachine.h"
#include "fakes/TWRecordingCleanerDelegate.h"

using namespace std::chrono_literals;

namespace {

using Lines = std::vector<std::string>;

class TWTrashCleanerTest : public testing::Test, protected TWFakeMachine {
protected:
    TWTrashCleanerTest()
    {
        places.trash = root.folder("trash");
        cleaner.setInfo(places.trash + "/files");
        cleaner.setDelegate(&reports);
        reports.shown = [this](std::string text) { return launcher.shown(std::move(text)); };
    }
    // The order inside is the listing's.
    Lines run()
    {
        cleaner.clean();
        runLoop.advance(1s);
        auto lines = reports.take();
        std::sort(lines.begin() + 1, lines.end() - 2);
        std::sort(launcher.records.begin(), launcher.records.end());
        return lines;
    }

    TWSettings settings{ userDefaults };
    TWTrashCleaner cleaner{ { tools, settings } };
    TWRecordingCleanerDelegate reports;
};

constexpr auto Started = "started: Emptying the Trash...";
constexpr auto Success = "success: The Trash is now empty.";
constexpr auto Failure = "failure: Some files could not be removed from the Trash!";

}

TEST_F(TWTrashCleanerTest, AnItemThatStaysKeepsItsRecordAndOtherRecordsGoQuietly)
{
    for (const auto* name : { "files/.hidden", "files/folder/inside", "files/kept", "info/.hidden.trashinfo",
             "info/folder.trashinfo", "info/kept.trashinfo", "info/orphan.trashinfo", "info/.trashinfo", "info/note",
             "directorysizes", "expunged/x" })
        root.write(std::string("trash/") + name, "x");
    // A file manager writes the record first and moves the item into the Trash a moment later.
    root.write("trash/info/newcomer.trashinfo", "x");
    launcher.atLaunch = [this] { root.write("trash/files/newcomer", "x"); };
    launcher.failures[places.trash + "/files/kept"] = { TWTermination::Kind::Exited, 1, "rm: not permitted" };
    EXPECT_EQ(run(),
        (Lines{ Started, "- Could not delete ROOT/trash/files/kept", "- Delete ROOT/trash/files/.hidden ...",
            "- Delete ROOT/trash/files/folder ...", "- Delete ROOT/trash/files/kept ...",
            "- The deletion tool said: rm: not permitted", Failure, "finished" }));
    EXPECT_EQ(launcher.records,
        (Lines{ "/bin/rm -rf ROOT/trash/./directorysizes", "/bin/rm -rf ROOT/trash/files/./.hidden",
            "/bin/rm -rf ROOT/trash/files/./folder", "/bin/rm -rf ROOT/trash/files/./kept",
            "/bin/rm -rf ROOT/trash/info/./.hidden.trashinfo", "/bin/rm -rf ROOT/trash/info/./folder.trashinfo",
            "/bin/rm -rf ROOT/trash/info/./orphan.trashinfo" }));
}

TEST_F(TWTrashCleanerTest, WithoutAReadableFolderNothingIsDeletedAndTheReasonIsSaid)
{
    EXPECT_EQ(run(), (Lines{ Started, Success, "finished" })) << "no Trash at all";
    root.write("elsewhere/precious", "x");
    root.write("trash/info/precious.trashinfo", "x");
    root.write("trash/info/other.trashinfo", "x");
    root.link("trash/files", root.path("elsewhere"));
    EXPECT_EQ(run(),
        (Lines{ Started, "- The Trash folder \"ROOT/trash/files\" could not be read (Not a directory).", Failure,
            "finished" }));
    EXPECT_EQ(launcher.records, Lines());
}

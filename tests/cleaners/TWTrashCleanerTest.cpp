#include "cleaners/TWTrashCleaner.h"

#include "fakes/TWRecordingCleanerDelegate.h"

namespace {

class TWTrashCleanerTest : public TWCleanerTest<TWTrashCleaner> {
protected:
    static constexpr auto Started = "started: Emptying the Trash...";
    static constexpr auto Success = "success: The Trash is now empty.";
    static constexpr auto Failure = "failure: Some files could not be removed from the Trash!";

    TWTrashCleanerTest()
    {
        places.trash = root.folder("trash");
        cleaner.setInfo(places.trash + "/files");
    }
    // The order inside is the listing's.
    Lines runSorted()
    {
        auto lines = run();
        std::sort(lines.begin() + 1, lines.end() - 2);
        std::sort(launcher.records.begin(), launcher.records.end());
        return lines;
    }
};

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
    EXPECT_EQ(runSorted(),
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
    EXPECT_EQ(runSorted(), (Lines{ Started, Success, "finished" })) << "no Trash at all";
    root.write("elsewhere/precious", "x");
    root.write("trash/info/precious.trashinfo", "x");
    root.write("trash/info/other.trashinfo", "x");
    root.link("trash/files", root.path("elsewhere"));
    EXPECT_EQ(runSorted(),
        (Lines{ Started, "- The Trash folder \"ROOT/trash/files\" could not be read (Not a directory).", Failure,
            "finished" }));
    EXPECT_EQ(launcher.records, Lines());
}

#include "app/TWResultsActions.h"

#include "fakes/TWFakeMachine.h"

namespace {

class TWResultsActionsTest : public testing::Test, protected TWFakeMachine {
protected:
    std::string show(const std::string& path)
    {
        actions.show(path, [this](const std::string& sentence) { said = sentence; });
        runLoop.runUntilIdle();
        return std::exchange(said, "nothing was said");
    }
    std::string shown() const { return launcher.shown(fileManager.shown.empty() ? "" : fileManager.shown.back()); }

    TWFakeFileManager fileManager{ runLoop };
    Lines kept;
    std::string problem;
    TWResultsActions actions{ { runLoop, fileSystem, places, fileManager, [this](const std::string& path) {
                                   kept.push_back(path);
                                   return problem;
                               } } };
    std::string said = "nothing was said";
};

TEST_F(TWResultsActionsTest, ShowsTheItemItselfOrTheNearestFolderThatIsLeft)
{
    const auto file = root.write("real/folder/a \xFF file", "x");
    root.link("link", root.path("real"));
    EXPECT_EQ(show(root.path("link/folder/a \xFF file")), "");
    EXPECT_EQ(shown(), "item ROOT/real/folder/a \xFF file");
    EXPECT_EQ(show(root.link("real/dangling", "nowhere")), "");
    EXPECT_EQ(shown(), "item ROOT/real/dangling") << "a link is shown itself";
    EXPECT_TRUE(show(root.path("link/folder/gone/file")).find("is gone") != std::string::npos);
    EXPECT_EQ(shown(), "folder ROOT/real/folder");
    EXPECT_TRUE(show(file + "/below a file").find("is gone") != std::string::npos);
    EXPECT_EQ(shown(), "folder ROOT/real/folder");
    fileManager.works = false;
    EXPECT_TRUE(show(file).find("no file manager") != std::string::npos);
}

TEST_F(TWResultsActionsTest, ASandboxShowsNothingOutsideOfIt)
{
    places.sandboxRoot = root.folder("sandbox");
    root.link("sandbox/way out", root.folder("outside"));
    for (const auto* path : { "outside", "sandbox/way out/gone", "sandboxed" })
        EXPECT_TRUE(show(root.path(path)).find("outside the sandbox") != std::string::npos) << path;
    EXPECT_EQ(shown(), "");
    EXPECT_EQ(show(root.path("sandbox/way out")), "");
    EXPECT_EQ(shown(), "item ROOT/sandbox/way out");
}

TEST_F(TWResultsActionsTest, KeepsWhatIsThereAndSaysWhy)
{
    const auto file = root.write("file", "x");
    EXPECT_TRUE(actions.keep(file).find("on the keep list now") != std::string::npos);
    problem = "The disk is full.";
    EXPECT_EQ(actions.keep(file), "The disk is full.");
    EXPECT_TRUE(actions.keep(root.path("gone")).find("nothing to keep") != std::string::npos);
    EXPECT_EQ(kept, (Lines{ file, file }));
}

}

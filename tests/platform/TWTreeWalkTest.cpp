#include "platform/TWTreeSizes.h"

#include "builders/TWHostileTree.h"
#include "builders/TWPrivateMounts.h"
#include "builders/TWThisProcess.h"
#include "platform/linux/TWLinuxFileSystem.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <random>
#include <thread>

namespace {

using Lines = std::vector<std::string>;

// Enters everything and notes each path, with "!" and the errno where a folder was not entered.
class Recorder final : public TWTreeVisitor<Lines> {
public:
    TWWalkStep visit(const TWWalkedFolder& folder, const TWFolderEntry& entry, Lines& lines) const override
    {
        ++visits;
        lines.push_back(folder.pathOf(entry));
        atVisit(lines.back());
        return TWWalkStep::Enter;
    }
    void notEntered(std::size_t root, const std::string& path, int error, Lines& lines) const override
    {
        lines.push_back(std::to_string(root) + " " + path + " !" + std::to_string(error));
    }

    mutable std::atomic<std::size_t> visits = 0;
    std::function<void(const std::string& path)> atVisit = [](const std::string&) {};
};

class TWTreeWalkTest : public testing::Test {
protected:
    Lines walk(const Lines& roots, unsigned threads)
    {
        Lines all;
        end = TWWalkTrees(
            files, { roots, TWLinkAtEnd::Follow }, recorder,
            [&](const Lines& lines) {
                atReceive();
                all.insert(all.end(), lines.begin(), lines.end());
            },
            cancellation, threads);
        return all;
    }

    // The order and the errors by the plainest walk there is.
    void walkPlainly(
        std::size_t root, const std::string& path, const TWOpenFolder* folder, int error, Lines& lines) const
    {
        if (!folder)
            return recorder.notEntered(root, path, error, lines);
        for (const auto& entry : folder->entries()) {
            lines.push_back(path + (path.ends_with('/') ? "" : "/") + std::string(entry.name));
            if (entry.kind == TWFileKind::Folder) {
                const auto child = folder->openFolder(entry, error);
                walkPlainly(root, std::string(lines.back()), child.get(), error, lines);
            }
        }
    }

    // Folders with few and with many entries, in no order. The files are one file: that is quicker to make.
    std::string makeTree(int entries) const
    {
        std::mt19937 random(7);
        const auto file = temporary.write("one", "");
        std::vector<std::string> folders{ temporary.folder("tree") };
        for (int number = 0; number < entries; ++number) {
            const auto name = folders[random() % folders.size()] + "/" + std::to_string(number);
            if (random() % 12 == 0) {
                mkdir(name.c_str(), 0755);
                folders.push_back(name);
            } else {
                std::filesystem::create_hard_link(file, name);
            }
        }
        return temporary.path("tree");
    }

    TWTemporaryFolder temporary;
    TWLinuxFileSystem files;
    Recorder recorder;
    TWCancellation cancellation;
    TWWalkEnd end = TWWalkEnd::Complete;
    std::function<void()> atReceive = [] {};
};

}

TEST_F(TWTreeWalkTest, GivesWhatOneThreadWouldInItsOrderOneCallAtATime)
{
    const TWHostileTree hostile(temporary);
    const auto canary = hostile.canaryDigest();
    temporary.link("way", "tree");
    Lines roots{ makeTree(6000), hostile.path(), temporary.path("nothing"), temporary.path("way") };
    for (int number = 0; number < 300; ++number) {
        roots.push_back(temporary.folder("small/" + std::to_string(number)) + "/");
        mkdir((roots.back() + "in").c_str(), 0700);
    }
    roots.push_back(temporary.path("small"));
    roots.push_back(temporary.write("file", ""));

    Lines expected;
    for (std::size_t root = 0; root < roots.size(); ++root) {
        int error = 0;
        const auto real = files.realPath(roots[root], TWLinkAtEnd::Follow, &error);
        const auto folder = real ? files.openFolder(*real, error) : nullptr;
        walkPlainly(root, roots[root], folder.get(), error, expected);
    }
    std::atomic<int> receiving = 0;
    atReceive = [&] {
        EXPECT_EQ(receiving++, 0);
        std::this_thread::sleep_for(std::chrono::microseconds(100)); // so that another call would fall into this one
        --receiving;
    };
    for (const unsigned threads : { 1U, 2U, 8U, TWAllCores }) {
        for (int round = 0; round < 5; ++round) {
            ASSERT_TRUE(walk(roots, threads) == expected) << threads << " threads";
            EXPECT_EQ(end, TWWalkEnd::Complete);
        }
    }
    EXPECT_EQ(hostile.canaryDigest(), canary);
}

TEST_F(TWTreeWalkTest, NeedsFewDescriptorsForDeepAndWideTrees)
{
    const auto deep = temporary.deepFolder("very deep", 2000, 10);
    const auto wide = temporary.folder("wide");
    for (int number = 0; number < 1000; ++number)
        mkdir((wide + "/" + std::to_string(number)).c_str(), 0700);
    const TWLowerLimit descriptors(RLIMIT_NOFILE, 256);
    for (const unsigned threads : { 1U, 8U }) {
        const auto found = walk({ deep, wide }, threads);
        EXPECT_EQ(found.size(), 2000 + 200 + 1000U);
        for (const auto& line : found)
            EXPECT_EQ(line.find('!'), std::string::npos) << line;
    }
}

TEST_F(TWTreeWalkTest, EndsSoonWhenCancelledAndSaysSo)
{
    const auto tree = makeTree(3000);
    recorder.atVisit = [this](const std::string&) {
        if (recorder.visits >= 3000)
            cancellation.cancel();
    };
    walk({ tree, tree, tree }, 8);
    EXPECT_EQ(end, TWWalkEnd::Cancelled);
    EXPECT_LT(recorder.visits, 3000 + 8 * 512U);
    recorder.visits = 0;
    EXPECT_TRUE(walk({ tree }, 1).empty());
    EXPECT_EQ(recorder.visits, 0U);
}

TEST_F(TWTreeWalkTest, SaysSoWhenMemoryRanOutOnAnyThread)
{
    const auto tree = makeTree(3000);
    for (const unsigned threads : { 1U, 2U }) {
        recorder.visits = 0;
        recorder.atVisit = [&, caller = std::this_thread::get_id()](const std::string&) {
            if (recorder.visits < 2000)
                return;
            if (threads == 1 || std::this_thread::get_id() != caller)
                throw std::bad_alloc();
            std::this_thread::sleep_for(std::chrono::milliseconds(1)); // until the other one has come so far
        };
        walk({ tree, tree, tree }, threads);
        EXPECT_EQ(end, TWWalkEnd::Failed);
    }
    recorder.atVisit = [](const std::string&) {};
    atReceive = [] { throw std::bad_alloc(); };
    walk({ tree }, 2);
    EXPECT_EQ(end, TWWalkEnd::Failed);
}

TEST_F(TWTreeWalkTest, DoesNotEnterWhatWasSwappedForALink)
{
    temporary.write("canary/secret", "");
    recorder.atVisit = [this](const std::string& path) {
        if (!path.ends_with("/victim"))
            return;
        std::filesystem::remove(path);
        std::filesystem::create_symlink(temporary.path("canary"), path);
    };
    for (const unsigned threads : { 1U, 8U }) {
        const auto victim = temporary.folder("tree" + std::to_string(threads) + "/victim");
        const auto found = walk({ temporary.path("tree" + std::to_string(threads)) }, threads);
        ASSERT_EQ(found.size(), 2U);
        EXPECT_TRUE(found[1].starts_with("0 " + victim + " !")) << found[1];
    }
}

TEST_F(TWTreeWalkTest, NamesWhatItCannotRead)
{
    const auto locked = temporary.folder("tree/locked");
    for (const auto& path : { temporary.path(), temporary.path("tree") })
        chmod(path.c_str(), 0755);
    chmod(locked.c_str(), 0);
    const TWWithoutPrivileges nobody;
    EXPECT_EQ(
        walk({ temporary.path("tree"), locked }, 8), (Lines{ locked, "0 " + locked + " !13", "1 " + locked + " !13" }));
    const auto sizes = TWAddUpTrees(files, { temporary.path("tree"), locked }, cancellation);
    EXPECT_EQ(sizes.total().items, 3U);
    EXPECT_EQ(sizes.total().unknown, 2U);
}

TEST_F(TWTreeWalkTest, DoesNotEnterWhatIsMountedInside)
{
    if (!TWPrivateMounts::begin())
        GTEST_SKIP() << "nothing can be mounted here";
    const auto mounted = temporary.folder("tree/mounted");
    const auto before = TWAddUpTrees(files, { temporary.path("tree") }, cancellation).total();
    ASSERT_TRUE(TWPrivateMounts::mountEmpty(mounted));
    temporary.write("tree/mounted/file", std::string(100'000, 'x'));
    const auto found = walk({ temporary.path("tree"), mounted }, 8);
    const auto size = TWAddUpTrees(files, { temporary.path("tree") }, cancellation).total();
    EXPECT_TRUE(TWPrivateMounts::detach(mounted));
    EXPECT_EQ(found, (Lines{ mounted, "0 " + mounted + " !18", mounted + "/file" }));
    EXPECT_EQ(size.items, before.items);
    EXPECT_LT(size.bytes, before.bytes);
    EXPECT_EQ(size.unknown, 0U);
}

TEST_F(TWTreeWalkTest, AddsUpEachFileOnceInEachTreeAndNothingBehindLinks)
{
    const auto big = temporary.write("t/deeper/big", std::string(100'000, 'x'));
    for (const auto* name : { "t/again", "t/deeper/again", "other" })
        std::filesystem::create_hard_link(big, temporary.path(name));
    temporary.link("t/link", "/usr");
    temporary.link("way", "t");
    const auto own = [this](const char* name) { return files.look(temporary.path(name)).facts.bytes; };
    const auto deeper = own("t/deeper") + own("other");
    const Lines paths{ temporary.path("t/"), temporary.path("other"), temporary.path("way/deeper"),
        temporary.path("way"), temporary.path("nothing") };
    for (const unsigned threads : { 1U, 8U }) {
        std::vector<std::uint64_t> told;
        const auto result
            = TWAddUpTrees(files, paths, cancellation, threads, [&](std::size_t first, const auto& sizes) {
                  EXPECT_EQ(first, told.size());
                  for (const auto& size : sizes)
                      told.push_back(size.bytes);
              });
        EXPECT_EQ(result.end, TWWalkEnd::Complete);
        EXPECT_EQ(told.size(), paths.size());
        for (std::size_t tree = 0; tree < told.size(); ++tree)
            EXPECT_EQ(told[tree], result.sizes[tree].bytes);
        std::vector<std::uint64_t> figures;
        for (const auto& size : result.sizes)
            figures.insert(figures.end(), { size.items, size.bytes });
        EXPECT_EQ(figures,
            (std::vector<std::uint64_t>{
                6, own("t") + own("t/link") + deeper, 1, own("other"), 3, deeper, 1, own("way"), 0, 0 }));
        EXPECT_EQ(result.total().unknown, 0U);
    }
}

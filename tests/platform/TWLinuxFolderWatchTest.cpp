#include "platform/linux/TWLinuxFolderWatcher.h"

#include "builders/TWDisorder.h"
#include "builders/TWThisProcess.h"
#include "contracts/TWFolderWatchContract.h"
#include "support/TWPath.h"

#include <map>
#include <sched.h>
#include <set>
#include <sys/wait.h>

namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr auto Late = 7s; // the next poll and the time to gather
constexpr int NotPossible = 77;

struct RealWatch {
    RealWatch()
    {
        folder.folder("root/one");
        folder.folder("root/two");
    }
    TWFolderWatcher& watcher() { return real; }
    std::string root() const { return folder.path("root"); }
    void change(const std::string& path) { std::ofstream(path + "/entry" + std::to_string(++entries)) << "x"; }

    TWTemporaryFolder folder;
    TWLinuxFolderWatcher real;
    int entries = 0;
};

std::size_t watchesOfThisProcess()
{
    std::size_t watches = 0;
    for (const auto& descriptor : fs::directory_iterator("/proc/self/fdinfo")) {
        std::ifstream info(descriptor.path());
        for (std::string line; std::getline(info, line);)
            watches += line.starts_with("inotify wd:");
    }
    return watches;
}

// Knows a tree by what the watch reports, as its users do.
struct Mirror {
    explicit Mirror(std::string givenRoot)
        : root(std::move(givenRoot))
    {
        scanAll();
    }
    void scanAll()
    {
        watched->setRoots({ root });
        tree.clear();
        scan(root);
    }
    void scan(const std::string& folder)
    {
        watched->add(folder);
        between();
        if (fs::is_directory(fs::symlink_status(folder)))
            list(folder);
    }
    void list(const std::string& folder)
    {
        const auto before = std::exchange(tree[folder], entriesOf(folder));
        for (const auto& path : before) {
            if (!tree[folder].contains(path))
                forget(path);
        }
        for (const auto& path : std::set(tree[folder])) {
            if (path.ends_with('/') && !tree.contains(path.substr(0, path.size() - 1)))
                scan(path.substr(0, path.size() - 1));
        }
    }
    void forget(std::string path)
    {
        if (path.ends_with('/'))
            path.pop_back();
        watched->remove(path);
        std::erase_if(tree, [&](const auto& known) { return TWPath::isAtOrBelow(known.first, path); });
    }
    void take(const TWFolderChanges& changes)
    {
        reports.push_back(changes);
        if (changes.everything)
            return scanAll();
        for (const auto& path : changes.trees) {
            forget(path);
            const auto above = tree.find(std::string(TWPath::parent(path)));
            if (path == root || (above != tree.end() && above->second.contains(path + '/')))
                scan(path);
        }
        for (const auto& path : changes.folders) {
            if (tree.contains(path))
                list(path);
        }
    }
    static bool isFolder(const fs::directory_entry& entry)
    {
        return entry.symlink_status().type() == fs::file_type::directory;
    }
    static std::set<std::string> entriesOf(const std::string& folder)
    {
        std::set<std::string> entries;
        std::error_code error;
        for (const auto& entry : fs::directory_iterator(folder, error))
            entries.insert(entry.path().string() + (isFolder(entry) ? "/" : ""));
        return entries;
    }

    // The whole tree as it is.
    std::map<std::string, std::set<std::string>> real() const
    {
        std::map<std::string, std::set<std::string>> found{ { root, entriesOf(root) } };
        for (const auto& entry : fs::recursive_directory_iterator(root)) {
            if (isFolder(entry))
                found[entry.path().string()] = entriesOf(entry.path().string());
        }
        return found;
    }

    const std::string root;
    std::function<void()> between = [] {}; // between watching and listing a folder
    TWFakeRunLoop runLoop;
    std::unique_ptr<TWFolderWatch> watch
        = TWLinuxFolderWatcher().watch(runLoop, [this](const auto& changes) { take(changes); });
    std::shared_ptr<TWWatchedFolders> watched = watch->folders();
    std::map<std::string, std::set<std::string>> tree;
    std::vector<TWFolderChanges> reports;
};

}

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, TWFolderWatchContract, RealWatch);

TEST(TWLinuxFolderWatchTest, WhoFollowsItsReportsKnowsTheTree)
{
    const TWTemporaryFolder folder;
    Mirror mirror(folder.folder("root"));
    TWDisorder disorder(folder, 9);
    const auto sometimes = [&] {
        if (disorder.below(10) == 0)
            disorder.change();
    };
    for (int round = 0; round < 200; ++round) {
        mirror.between = sometimes;
        for (auto changes = 1 + disorder.below(12); changes > 0; --changes) {
            disorder.change();
            if (disorder.below(10) == 0)
                mirror.runLoop.advance(400ms);
        }
        mirror.runLoop.advance(1200ms);
        mirror.between = [] {};
        mirror.runLoop.advance(2100ms);
        ASSERT_EQ(mirror.tree, mirror.real()) << "round " << round;
        ASSERT_EQ(watchesOfThisProcess(), mirror.tree.size()) << "round " << round;
    }
    EXPECT_GT(mirror.reports.size(), 150U);
    EXPECT_FALSE(
        std::any_of(mirror.reports.begin(), mirror.reports.end(), [](auto& report) { return report.everything; }));
}

TEST(TWLinuxFolderWatchTest, AppendingIsNoChangeAndABurstIsOne)
{
    const TWTemporaryFolder folder;
    std::ofstream log(folder.write("root/0", ""));
    Mirror mirror(folder.path("root"));
    for (int line = 0; line < 2000; ++line)
        log << line << std::endl;
    mirror.runLoop.advance(2s);
    EXPECT_TRUE(mirror.reports.empty());

    for (int name = 0; name < 10'000; ++name) // two events each; the limit is fs.inotify.max_queued_events
        fs::rename(folder.path("root/" + std::to_string(name)), folder.path("root/" + std::to_string(name + 1)));
    mirror.runLoop.advance(4s);
    EXPECT_EQ(mirror.reports, std::vector({ TWFolderChanges{ true, {}, {} } }));
    EXPECT_EQ(mirror.tree, mirror.real());
    folder.write("root/more", "");
    mirror.runLoop.advance(2s);
    EXPECT_EQ(mirror.reports.back(), (TWFolderChanges{ false, { mirror.root }, {} }));
}

TEST(TWLinuxFolderWatchTest, RootsMayComeAndGoAndLinksAreFollowedOnlyToThem)
{
    const TWTemporaryFolder folder;
    const auto outside = folder.folder("outside/inner");
    folder.write("target/file", "");
    const std::vector<std::string> roots{ folder.path("above/missing"), folder.link("link", "target"),
        folder.path("file"), folder.folder("here/root") };
    folder.link("target/out", folder.path("outside"));
    TWFakeRunLoop runLoop;
    std::vector<TWFolderChanges> reports;
    const auto watch = TWLinuxFolderWatcher().watch(runLoop, [&](const auto& changes) { reports.push_back(changes); });
    const auto scan = [&] {
        reports.clear();
        watch->folders()->setRoots(roots);
        for (const auto& root : roots)
            watch->folders()->add(root);
        for (const auto* path : { "/out", "/out/inner" })
            watch->folders()->add(roots[1] + path);
    };
    const auto expectEverything = [&](const char* what, TWRunLoop::Duration time = Late) {
        runLoop.advance(time);
        EXPECT_EQ(reports, std::vector({ TWFolderChanges{ true, {}, {} } })) << what;
        scan();
    };
    scan();
    folder.write("target/more", "");
    folder.write("outside/inner/more", "");
    runLoop.advance(Late);
    EXPECT_EQ(reports, std::vector({ TWFolderChanges{ false, { roots[1] }, {} } }));
    EXPECT_EQ(watch->problem(), "");

    scan();
    folder.folder("above/missing");
    expectEverything("appeared");
    fs::rename(folder.path("above"), folder.path("elsewhere"));
    expectEverything("gone with the folder above it");
    fs::remove_all(roots[3]);
    expectEverything("deleted", 1500ms);
    folder.write("file", "");
    expectEverything("a file");
    fs::remove(roots[1]);
    folder.link("link", "outside");
    expectEverything("leads elsewhere");
    watch->folders()->setRoots({});
    folder.write("outside/more", "");
    runLoop.advance(Late);
    EXPECT_TRUE(reports.empty());
}

TEST(TWLinuxFolderWatchTest, PermissionsCount)
{
    const TWTemporaryFolder folder;
    const auto root = folder.folder("root");
    const auto secret = folder.folder("root/secret");
    for (const auto& path : { folder.path(), root, secret })
        ASSERT_EQ(chmod(path.c_str(), 0755) + (getuid() == 0 ? chown(path.c_str(), 65534, 65534) : 0), 0);
    const TWWithoutPrivileges privileges;
    Mirror mirror(root);
    std::ofstream(secret + "/file") << "x";
    mirror.runLoop.advance(2s);
    for (const mode_t mode : { 0U, 0700U }) {
        mirror.reports.clear();
        chmod(secret.c_str(), mode);
        mirror.runLoop.advance(Late);
        ASSERT_FALSE(mirror.reports.empty());
        EXPECT_EQ(mirror.reports.front(), (TWFolderChanges{ false, {}, { secret } }));
        EXPECT_EQ(mirror.tree[secret].size(), mode == 0 ? 0U : 1U);
        EXPECT_EQ(mirror.watch->problem(), "");
    }
}

TEST(TWLinuxFolderWatchTest, FoldersBeyondALimitArePolled)
{
    const TWTemporaryFolder folder;
    for (const auto* name : { "root/a", "root/b", "root/c" })
        folder.folder(name);
    const auto works = [&](const char* words) {
        Mirror mirror(folder.path("root"));
        mirror.runLoop.advance(Late);
        folder.write("root/b/new/file", "");
        folder.write("root/c/file", "");
        mirror.runLoop.advance(Late);
        Mirror unchanged("/usr/local");
        unchanged.runLoop.advance(4 * Late);
        return mirror.tree == mirror.real() && mirror.watch->problem().find(words) != std::string::npos
            && unchanged.reports.empty();
    };
    // Within a user namespace of its own a child process may lower the limits.
    const auto status = [&](const char* limit, const char* value, const char* words) {
        const pid_t child = fork();
        if (child == 0) {
            const bool isLower = unshare(CLONE_NEWUSER) == 0
                && std::ofstream(std::string("/proc/sys/user/") + limit) << value << std::flush;
            _exit(!isLower ? NotPossible : works(words) ? 0 : 1);
        }
        int ended = 0;
        waitpid(child, &ended, 0);
        return WIFEXITED(ended) ? WEXITSTATUS(ended) : 1000 + ended;
    };
    const int fewWatches = status("max_inotify_watches", "2", "fs.inotify.max_user_watches");
    if (fewWatches == NotPossible)
        GTEST_SKIP() << "no user namespaces here";
    EXPECT_EQ(fewWatches, 0);
    EXPECT_EQ(status("max_inotify_instances", "0", "Too many open files"), 0);
}

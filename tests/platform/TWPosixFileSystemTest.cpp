#include "platform/posix/TWPosixFileSystem.h"
#include "platform/posix/TWDescriptor.h"

#include "builders/TWTemporaryFolder.h"
#include "platform/TWRunLoop.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

namespace {

constexpr int DeepLevels = 2000;

// Gives back the old one.
rlim_t setLimit(__rlimit_resource resource, rlim_t value)
{
    rlimit limits{};
    getrlimit(resource, &limits);
    std::swap(limits.rlim_cur, value);
    setrlimit(resource, &limits);
    return value;
}

class TWPosixFileSystemTest : public testing::Test {
protected:
    std::map<std::string, TWFileKind> listing(const std::string& path) const
    {
        std::map<std::string, TWFileKind> found;
        const auto folder = files.openFolder(path, TWLinkAtEnd::DoNotFollow);
        for (const TWFolderEntry& entry : folder->entries())
            found.emplace(entry.name, entry.kind);
        return found;
    }
    bool isPackage(const std::string& name) const
    {
        return files.openFolder(temporary.folder(name), TWLinkAtEnd::DoNotFollow)->isPackage();
    }

    TWTemporaryFolder temporary;
    TWPosixFileSystem files;
    TWCancellation going;
};

}

TEST_F(TWPosixFileSystemTest, ListsHostileNamesAndNeverFollowsLinks)
{
    const std::string longest(255, 'x');
    for (const std::string& name :
        { std::string("\xff\xfe"), std::string("a\nb"), std::string("-rf"), longest, std::string(".h") })
        temporary.write("t/" + name, "");
    temporary.folder("t/folder");
    temporary.link("t/loop", "loop");
    temporary.link("t/dangling", "nothing");
    const std::string link = temporary.link("t/link", "folder");
    mkfifo(temporary.path("t/pipe").c_str(), 0600);

    using enum TWFileKind;
    const std::map<std::string, TWFileKind> expected{ { "\xff\xfe", File }, { "a\nb", File }, { "-rf", File },
        { longest, File }, { ".h", File }, { "folder", Folder }, { "loop", Link }, { "dangling", Link },
        { "link", Link }, { "pipe", Other } };
    EXPECT_EQ(listing(temporary.path("t")), expected);

    EXPECT_EQ(files.facts(link + "//")->kind, Link);
    EXPECT_TRUE(files.isFolder(link + "/", TWLinkAtEnd::Follow));
    EXPECT_TRUE(files.exists(temporary.path("t/dangling")));
    EXPECT_FALSE(files.exists(temporary.path("t") + std::string("\0x", 2)));
    int error = 0;
    EXPECT_FALSE(files.openFolder(link + "/", TWLinkAtEnd::DoNotFollow, &error));
    EXPECT_EQ(error, ENOTDIR);
    const auto folder = files.openFolder(temporary.path("t"), TWLinkAtEnd::DoNotFollow);
    for (const TWFolderEntry& entry : folder->entries())
        EXPECT_EQ(folder->openFolder(entry) != nullptr, entry.name == "folder");
}

TEST_F(TWPosixFileSystemTest, AFolderThatCannotBeReadIsNoFolder)
{
    const std::string locked = temporary.folder("locked");
    chmod(temporary.path().c_str(), 0755);
    chmod(locked.c_str(), 0);
    const uid_t user = geteuid();
    [[maybe_unused]] const int dropped = user == 0 ? seteuid(65534) : 0; // root may read everything
    int error = 0;
    EXPECT_FALSE(files.openFolder(locked, TWLinkAtEnd::DoNotFollow, &error));
    EXPECT_EQ(error, EACCES);
    EXPECT_EQ(files.treeSize(locked, going).items, 1u);
    [[maybe_unused]] const int restored = seteuid(user);
}

TEST_F(TWPosixFileSystemTest, KnowsPackages)
{
    EXPECT_TRUE(isPackage("Foo.APP"));
    EXPECT_TRUE(isPackage("p.photoslibrary/"));
    EXPECT_FALSE(isPackage("Foo.app/Contents"));
    chmod(temporary.write("tool/AppRun", "").c_str(), 0755);
    EXPECT_TRUE(isPackage("tool"));
    temporary.write("text/AppRun", "");
    temporary.folder("nested/AppRun");
    temporary.link("broken/AppRun", "nothing");
    EXPECT_FALSE(isPackage("text") || isPackage("nested") || isPackage("broken"));
}

TEST_F(TWPosixFileSystemTest, WalksAVeryDeepTreeWithFewDescriptors)
{
    TWDescriptor deepest(open(temporary.path().c_str(), O_PATH));
    for (int level = 0; level < DeepLevels; ++level) {
        mkdirat(deepest.get(), "down", 0700);
        mkdirat(deepest.get(), "side", 0700);
        deepest = TWDescriptor(openat(deepest.get(), "down", O_PATH));
    }
    const auto descriptors = setLimit(RLIMIT_NOFILE, 256);
    std::vector<std::unique_ptr<TWOpenFolder>> chain;
    std::string path = temporary.path();
    chain.push_back(files.openFolder(path, TWLinkAtEnd::DoNotFollow));
    const auto step = [&chain](std::string_view name) -> std::unique_ptr<TWOpenFolder> {
        for (const TWFolderEntry& entry : chain.back()->entries())
            if (entry.name == name)
                return chain.back()->openFolder(entry);
        return nullptr;
    };
    while (auto next = step("down")) {
        chain.push_back(std::move(next));
        path += "/down";
    }
    ASSERT_EQ(chain.size(), DeepLevels + 1u);
    EXPECT_TRUE(files.isFolder(path)); // longer than the system takes
    EXPECT_TRUE(files.openFolder(path, TWLinkAtEnd::DoNotFollow));
    EXPECT_FALSE(files.exists(path + "/down"));
    chain.pop_back();
    for (; chain.size() > DeepLevels / 2; chain.pop_back())
        ASSERT_TRUE(step("side")) << chain.size();

    // Swapped for another folder meanwhile: what was listed is not there any more.
    const std::string upper = temporary.path("down/down");
    ASSERT_EQ(rename(upper.c_str(), temporary.path("away").c_str()), 0);
    temporary.folder("down/down/side");
    for (; chain.size() > 100; chain.pop_back())
        step("side");
    EXPECT_FALSE(step("side"));
    EXPECT_EQ(files.treeSize(temporary.path("away"), going).items, (DeepLevels - 2) * 2 + 1u);
    setLimit(RLIMIT_NOFILE, descriptors);
}

TEST_F(TWPosixFileSystemTest, CountsATreeWithEachFileOnceAndNothingBehindLinks)
{
    std::filesystem::create_hard_link(temporary.write("t/big", std::string(100'000, 'x')), temporary.path("t/again"));
    temporary.link("t/link", "/usr");
    const auto own = [this](const char* name) { return files.facts(temporary.path(name))->bytes; };
    EXPECT_EQ(files.treeSize(temporary.path("t/"), going).bytes, own("t") + own("t/big") + own("t/link"));
    going.cancel();
    EXPECT_EQ(files.treeSize(temporary.path("t"), going).items, 1u);
}

TEST_F(TWPosixFileSystemTest, ResolvesAllButTheLastComponent)
{
    temporary.folder("real/sub");
    temporary.link("real/leaf", "sub");
    temporary.link("way", "real");
    temporary.write("file", "");
    EXPECT_EQ(files.realPath(temporary.path("way/leaf/")), temporary.path("real/leaf"));
    EXPECT_EQ(files.realPath(temporary.path("way/new")), temporary.path("real/new"));
    EXPECT_EQ(files.realPath(temporary.path("way/leaf/..")), temporary.path("real"));
    EXPECT_EQ(files.realPath("//"), "/");
    EXPECT_FALSE(files.realPath(temporary.path("nothing/x")));
    EXPECT_FALSE(files.realPath(temporary.path("file/x")));
}

TEST_F(TWPosixFileSystemTest, MakesFoldersAndReadsPlainFilesOnly)
{
    EXPECT_EQ(files.makeFolders(temporary.path("a//b/c/")), 0);
    const std::string file = temporary.write("a/file", "12345");
    EXPECT_EQ(files.makeFolders(file), EEXIST);
    EXPECT_EQ(files.makeFolders(file + "/x"), EEXIST);
    mkfifo(temporary.path("pipe").c_str(), 0600);
    EXPECT_EQ(files.read(file, 5).bytes, "12345");
    EXPECT_EQ(files.read(file, 4).error, EFBIG);
    EXPECT_EQ(files.read(temporary.path("a"), 9).error, EISDIR);
    EXPECT_EQ(files.read(temporary.path("pipe"), 9).error, EINVAL);
    EXPECT_GT(files.read("/proc/self/status", 1 << 20).bytes.size(), 0u);

    EXPECT_EQ(files.copyFile(file, temporary.path("copy")), 0);
    EXPECT_EQ(temporary.read("copy"), "12345");
    EXPECT_EQ(files.copyFile(file, temporary.link("to", "nothing")), EEXIST);
    EXPECT_EQ(TWErrorText(EACCES), "Permission denied");
}

TEST_F(TWPosixFileSystemTest, AWriteIsWholeOrDoesNotHappen)
{
    const std::string file = temporary.write(std::string(255, 'n'), "old");
    chmod(file.c_str(), 0640);
    temporary.link("two", "one");
    temporary.link("one", temporary.path("data"));
    EXPECT_EQ(files.writeAtomically(temporary.path("two"), "new"), 0); // the target does not exist yet
    EXPECT_EQ(files.facts(temporary.path("two"))->kind, TWFileKind::Link);
    EXPECT_EQ(temporary.read("data"), "new");
    EXPECT_EQ(files.writeAtomically(file, "new"), 0);
    struct stat found;
    stat(file.c_str(), &found);
    EXPECT_EQ(found.st_mode & 07777, 0640u);

    temporary.link("loop", "loop");
    EXPECT_EQ(files.writeAtomically(temporary.path("loop"), "x"), ELOOP);
    EXPECT_EQ(files.writeAtomically(temporary.folder("folder"), "x"), EISDIR);
    EXPECT_EQ(files.writeAtomically(temporary.path("nothing/x"), "x"), ENOENT);
    const auto before = listing(temporary.path());
    signal(SIGXFSZ, SIG_IGN);
    const auto size = setLimit(RLIMIT_FSIZE, 1000); // as a full disk: the write fails half way
    EXPECT_EQ(files.writeAtomically(file, std::string(5000, 'x')), EFBIG);
    setLimit(RLIMIT_FSIZE, size);
    signal(SIGXFSZ, SIG_DFL);
    EXPECT_EQ(temporary.read(std::string(255, 'n')), "new");
    EXPECT_EQ(listing(temporary.path()), before);
}

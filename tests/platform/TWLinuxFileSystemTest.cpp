#include "platform/linux/TWLinuxFileSystem.h"

#include "builders/TWPrivateMounts.h"
#include "builders/TWTemporaryFolder.h"
#include "builders/TWThisProcess.h"

#include <gtest/gtest.h>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <map>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>

namespace {

constexpr int DeepLevels = 2000;

class TWLinuxFileSystemTest : public testing::Test {
protected:
    bool isPackage(const std::string& name) { return files.openFolder(temporary.folder(name), error)->isPackage(); }

    TWTemporaryFolder temporary;
    TWLinuxFileSystem files;
    int error = 0;
};

}

TEST_F(TWLinuxFileSystemTest, ListsHostileNamesAndNeverFollowsLinks)
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
    std::map<std::string, TWFileKind> listing;
    const auto folder = files.openFolder(temporary.path("t"), error);
    for (const TWFolderEntry& entry : folder->entries()) {
        listing.emplace(entry.name, entry.kind);
        EXPECT_EQ(folder->openFolder(entry, error) != nullptr, entry.name == "folder");
    }
    EXPECT_EQ(listing, expected);
    EXPECT_EQ(files.look(link + "//").facts.kind, Link);
    EXPECT_TRUE(files.look(link + "/", TWLinkAtEnd::Follow).isFolder());
    EXPECT_TRUE(files.look(temporary.path("t/dangling")).isThere());
    EXPECT_EQ(files.look(temporary.path("t") + std::string("\0x", 2)).presence, TWPresence::Gone);
    EXPECT_FALSE(files.openFolder(link + "/", error));
    EXPECT_EQ(error, ENOTDIR);
}

TEST_F(TWLinuxFileSystemTest, KnowsPackages)
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

TEST_F(TWLinuxFileSystemTest, WalksAVeryDeepTreeWithFewDescriptors)
{
    temporary.deepFolder(".", DeepLevels, 1);
    const TWLowerLimit descriptors(RLIMIT_NOFILE, 256);
    std::vector<std::unique_ptr<TWOpenFolder>> chain;
    std::string path = temporary.path();
    chain.push_back(files.openFolder(path, error));
    const auto step = [&](const TWOpenFolder& folder, std::string_view name) -> std::unique_ptr<TWOpenFolder> {
        for (const TWFolderEntry& entry : folder.entries())
            if (entry.name == name)
                return folder.openFolder(entry, error);
        return nullptr;
    };
    while (auto next = step(*chain.back(), "down")) {
        chain.push_back(std::move(next));
        path += "/down";
    }
    ASSERT_EQ(chain.size(), DeepLevels + 1u);
    EXPECT_TRUE(files.look(path).isFolder()); // longer than the system takes
    EXPECT_TRUE(files.openFolder(path, error));
    EXPECT_EQ(files.look(path + "/down").presence, TWPresence::Gone);
    chain.pop_back();
    for (; chain.size() > DeepLevels / 2; chain.pop_back())
        ASSERT_TRUE(step(*chain.back(), "side")) << chain.size();
    ASSERT_TRUE(chain[1]->duplicate(error) && step(*chain[1], "side"));

    // Swapped for another folder meanwhile: what is found on the way down from the top is not what was listed.
    ASSERT_EQ(rename(temporary.path("down/down").c_str(), temporary.path("away").c_str()), 0);
    EXPECT_TRUE(!chain[3]->duplicate(error) && error == ESTALE);
    temporary.folder("down/down/down/side");
    EXPECT_FALSE(step(*chain[50], "side") || chain[3]->duplicate(error));
    EXPECT_EQ(error, ESTALE);
    EXPECT_EQ(chain[3]->look(chain[3]->entries()[0]).presence, TWPresence::Unknown);
}

TEST_F(TWLinuxFileSystemTest, ResolvesAllButTheLastComponent)
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

// As in containers whose filter does not know openat2(). The filter ends with its thread.
TEST_F(TWLinuxFileSystemTest, EntersNoBindMountWithoutRestrictedOpening)
{
    if (!TWPrivateMounts::begin())
        GTEST_SKIP() << "nothing can be mounted here";
    const auto bound = temporary.folder("t/bound");
    temporary.folder("t/plain");
    ASSERT_TRUE(TWPrivateMounts::bind(temporary.folder("other"), bound));
    std::thread([&] {
        sock_filter steps[] = { BPF_STMT(BPF_LD | BPF_W | BPF_ABS, 0), BPF_JUMP(BPF_JMP | BPF_JEQ, SYS_openat2, 0, 1),
            BPF_STMT(BPF_RET, SECCOMP_RET_ERRNO | EPERM), BPF_STMT(BPF_RET, SECCOMP_RET_ALLOW) };
        const sock_fprog filter = { std::size(steps), steps };
        ASSERT_TRUE(
            prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0);
        const auto folder = files.openFolder(temporary.path("t"), error);
        for (const TWFolderEntry& entry : folder->entries())
            EXPECT_TRUE(folder->openFolder(entry, error) ? entry.name == "plain" : error == EXDEV);
    }).join();
    EXPECT_TRUE(TWPrivateMounts::detach(bound));
}

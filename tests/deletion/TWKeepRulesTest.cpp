#include "deletion/TWKeepRules.h"

#include "builders/TWPrivateMounts.h"
#include "fakes/TWFakeMachine.h"

namespace {

using enum TWKeepEntry::Kind;

class TWKeepRulesTest : public testing::Test, protected TWFakeMachine {
protected:
    // Paths in the home folder and what the rules say about them; "" if the path may be deleted.
    void expect(const std::vector<std::pair<std::string, std::string>>& rows)
    {
        for (const auto& [path, expected] : rows)
            EXPECT_EQ(objectionTo(places.home + "/" + path, guard), expected) << path;
    }
};

TEST_F(TWKeepRulesTest, EachKindKeepsWhatItSaysWhereverItIs)
{
    places.trash = root.path("home/bin/Trash");
    for (const auto* name : { "keys/private/key", "keys/b", "mail/old/letter", "work/deep/er/a.kdbx", "work/deep/b",
             "vault.d/x/y", "free/file", "bin/Trash/files/mail/a.kdbx", "bin/other" })
        root.write(std::string("home/") + name, "");
    root.link("home/free/link.kdbx", "/nowhere");
    root.link("home/to-mail", "mail");
    root.link("home/to-trash", "bin/Trash/files/mail");
    guard.setKeepList(TWKeepList({ { Path, "~/keys" }, { FolderWithContents, "~/mail/old/" }, { Names, "*.kdbx" },
        { Names, "vault.[!c]" }, { Path, "~/bin/Trash/files/mail" }, { Path, "~/to-trash" } }));
    constexpr auto OldInside = R"(it holds "~/mail/old/", which is on the keep list.)";
    constexpr auto Kdbx = R"(it holds "a.kdbx", and names like "*.kdbx" are on the keep list.)";
    constexpr auto Vault = R"(it lies in "vault.d", and names like "vault.[!c]" are on the keep list.)";
    expect({ { "keys", R"(it is on the keep list ("~/keys").)" }, { "keys/private", "" }, { "keys/b", "" },
        { "mail/old", R"(it is on the keep list ("~/mail/old/").)" }, { "mail", OldInside }, { "mail/new", "" },
        { "mail/old/letter", R"(it lies in "~/mail/old/", which is on the keep list.)" },
        { "to-mail/old/letter", R"(it lies in "~/mail/old/", which is on the keep list.)" }, { "to-mail", "" },
        { "work/deep/er/a.kdbx", R"(names like "*.kdbx" are on the keep list.)" }, { "work/deep/er", Kdbx },
        { "work", Kdbx }, { "work/deep/b", "" }, { "vault.d", R"(names like "vault.[!c]" are on the keep list.)" },
        { "vault.d/x", Vault }, { "vault.d/x/y", Vault }, { "free/file", "" },
        { "to-trash", R"(it is on the keep list ("~/to-trash").)" },
        { "free", R"(it holds "link.kdbx", and names like "*.kdbx" are on the keep list.)" },
        { "bin/Trash/files/mail", "" }, { "bin/Trash/files/mail/a.kdbx", "" }, { "bin/Trash", "" }, { "bin", "" } });
    // A list without entries, and one that could not be read.
    guard.setKeepList(TWKeepList(std::in_place));
    expect({ { "keys", "" }, { "work", "" } });
    guard.setKeepList(std::nullopt);
    expect({ { "free/file", "the keep list could not be read." },
        { "bin/Trash/files/mail", "the keep list could not be read." } });
}

TEST_F(TWKeepRulesTest, AKeptPathIsKnownByItsTextAndByWhatIsThere)
{
    root.write("disk/docs/tax", "1");
    root.write("disk/docs/note", "1");
    root.link("home/docs", "../disk/docs");
    root.link("home/bin/tool", root.path("disk/tool"));
    root.write("disk/tool", "");
    root.folder("home/x/y");
    guard.setKeepList(TWKeepList({ { Path, "~/docs/tax" }, { Path, "~/bin/tool" }, { FolderWithContents, "~/a/b/c" },
        { Path, "~/docs/../z" }, { Path, "~/x/y/later" }, { Path, "relative" }, { Path, "" }, { Names, "" } }));
    constexpr auto Tax = R"(it is on the keep list ("~/docs/tax").)";
    constexpr auto Tool = R"(it is on the keep list ("~/bin/tool").)";
    const auto expectAll = [&] {
        expect({ { "docs/tax", Tax }, { "../disk/docs/tax", Tax },
            { "docs", R"(it holds "~/docs/tax", which is on the keep list.)" },
            { "../disk", R"(it holds "~/docs/tax", which is on the keep list.)" }, { "docs/note", "" },
            { "bin/tool", Tool }, { "../disk/tool", Tool }, { "x", "" },
            { "z", R"(it is on the keep list ("~/docs/../z").)" },
            { "../disk/z", R"(it is on the keep list ("~/docs/../z").)" } });
    };
    expectAll();
    // Now an editor writes a new file and renames it over the old one, and what did not exist is made.
    root.write("disk/docs/new", "2");
    std::filesystem::rename(root.path("disk/docs/new"), root.path("disk/docs/tax"));
    expectAll();
    root.write("home/a/b/c/d/e", "");
    root.write("home/x/y/later", "");
    expect({ { "x", R"(it holds "~/x/y/later", which is on the keep list.)" },
        { "a", R"(it holds "~/a/b/c", which is on the keep list.)" },
        { "a/b/c", R"(it is on the keep list ("~/a/b/c").)" },
        { "a/b/c/d/e", R"(it lies in "~/a/b/c", which is on the keep list.)" }, { "a/b/d", "" } });
    std::filesystem::rename(root.path("disk/tool"), root.path("disk/renamed"));
    expect({ { "../disk/renamed", Tool } });
}

TEST_F(TWKeepRulesTest, ABindMountIsNoWayAround)
{
    if (!TWPrivateMounts::begin())
        GTEST_SKIP() << "nothing can be mounted here";
    root.write("disk/keys/private/key", "");
    root.write("disk/tax", "");
    const auto alias = root.folder("home/alias");
    guard.setKeepList(TWKeepList({ { FolderWithContents, root.path("disk/keys/private") },
        { Path, root.path("disk/tax") }, { Path, alias + "/same" } }));
    ASSERT_TRUE(TWPrivateMounts::bind(root.path("disk"), alias));
    guard.rules()->prepare();
    root.write("disk/new", "");
    std::filesystem::rename(root.path("disk/new"), root.path("disk/tax"));
    root.write("disk/same", "");
    for (const auto* path : { "alias/keys", "alias/keys/private", "alias/keys/private/key", "alias/tax", "../disk/tax",
             "alias/same", "../disk/same" })
        EXPECT_NE(objectionTo(places.home + "/" + path, guard), "") << path;
    EXPECT_EQ(objectionTo(alias + "/other", guard), "");
    guard.setKeepList(TWKeepList({ { Names, "*.kdbx" } }));
    root.folder("disk/outer/mounted");
    ASSERT_TRUE(TWPrivateMounts::bind(root.path("disk/keys"), root.path("disk/outer/mounted")));
    EXPECT_EQ(objectionTo(root.path("disk/outer"), guard),
        R"(it holds "mounted", which could not be searched for what is on the keep list (Invalid cross-device link).)");
    EXPECT_TRUE(TWPrivateMounts::detach(root.path("disk/outer/mounted")));
    EXPECT_TRUE(TWPrivateMounts::detach(alias));
}

TEST_F(TWKeepRulesTest, AnotherFolderAndAnEndedSearchTellNothing)
{
    const auto locked = root.folder("home/folder/locked");
    guard.setKeepList(TWKeepList({ { Names, "*.kdbx" } }));
    expect({ { "folder", "" } });
    const auto rules = guard.rules();
    int error = 0;
    const auto home = fileSystem.holdFolder(places.home, error);
    const auto judged = rules->judgeFolder(*home, places.home);
    const auto another = fileSystem.look(locked);
    TWCancellation cancelled;
    cancelled.cancel();
    constexpr auto NotToTheEnd = "the search in it for kept items could not be finished.";
    constexpr auto Search = TWDeletionRules::Search::Names;
    EXPECT_EQ(rules->objectionInside(judged, "folder", another, Search, {}), NotToTheEnd);
    EXPECT_EQ(rules->objectionInside(judged, "folder", home->look("folder"), Search, cancelled), NotToTheEnd);
}

// A Trash that leads to the home folder or to documents must not switch the list off.
TEST_F(TWKeepRulesTest, ATrashThatLeadsElsewhereIsNoTrash)
{
    root.write("home/key", "");
    root.write("home/docs/files/key", "");
    const std::string trash = "home/.local/share/Trash";
    const auto expectKept = [&] {
        guard.setKeepList(TWKeepList({ { Path, "~/key" }, { Names, "files" } }));
        expect({ { "key", R"(it is on the keep list ("~/key").)" },
            { "docs/files/key", R"(it lies in "files", and names like "files" are on the keep list.)" } });
    };
    for (const auto& target : { root.path(), root.path("home/docs") }) {
        root.link(trash, target);
        expectKept();
        std::filesystem::remove(root.path(trash));
    }
    root.folder(trash);
    root.link(trash + "/files", root.path("home/docs/files"));
    expectKept();
}

TEST_F(TWKeepRulesTest, WhatHasLeftItsKeptPlaceIsFoundWhereItIsNow)
{
    root.write("home/kept/a", "");
    root.write("home/key", "");
    root.write("home/old/x/y", "");
    root.write("home/free/x/y", "");
    guard.setKeepList(TWKeepList({ { FolderWithContents, "~/kept" }, { Path, "~/key" } }));
    expect({ { "old", "" } });
    std::filesystem::rename(root.path("home/kept"), root.path("home/old/x/moved"));
    expect({ { "old", R"(it holds "moved", which is on the keep list and has been moved.)" }, { "free", "" } });
    std::filesystem::rename(root.path("home/key"), root.path("home/free/x/key"));
    expect({ { "free", R"(it holds "key", which is on the keep list and has been moved.)" } });
}

}

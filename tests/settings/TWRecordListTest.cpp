#include "settings/TWRecordList.h"

#include "fakes/TWFakeMachine.h"
#include "platform/posix/TWTemporaryFile.h"
#include "plist/TWPropertyList.h"

namespace {

// An array of a path and perhaps a name, and of whatever a later version puts behind them.
struct Entry {
    static constexpr auto Kind = "an entry";
    std::string path;
    TWValue::Array rest;

    static std::optional<Entry> from(TWValue value)
    {
        auto* items = value.array();
        if (!items || items->empty() || !items->front().string())
            return std::nullopt;
        Entry entry{ *items->front().string(), {} };
        items->erase(items->begin());
        entry.rest = std::move(*items);
        return entry;
    }
    TWValue value() const
    {
        TWValue::Array items{ path };
        items.insert(items.end(), rest.begin(), rest.end());
        return items;
    }
    const std::string& identity() const { return path; }
    static std::string problem(const std::vector<Entry>& entries) { return entries.size() > 9 ? "it is full" : ""; }
    friend bool operator==(const Entry&, const Entry&) = default;
};

using List = TWRecordList<Entry>;

class TWRecordListTest : public testing::Test, protected TWFakeMachine {
protected:
    static constexpr auto File = "home/.local/share/Tidewell/L.plist";

    void put(const Lines& paths)
    {
        TWValue::Array records;
        for (const auto& path : paths)
            records.push_back(TWValue::Array{ path, "named " + path, 3 });
        root.write(File, *TWPropertyList::write(std::move(records), TWPropertyListFormat::XML));
    }
    static Lines paths(const List::Records& records)
    {
        Lines result;
        for (const auto& record : records)
            result.push_back(record.path + (record.rest.size() == 2 ? "" : "?"));
        return result;
    }
    Lines live() const { return paths(list.records()); }
    Lines saved() const { return paths(list.saved()); }
    void expect(const Lines& liveOnes, const Lines& savedOnes, bool unsaved) const
    {
        EXPECT_EQ(live(), liveOnes);
        EXPECT_EQ(saved(), savedOnes);
        EXPECT_EQ(list.hasUnsavedEdits(), unsaved);
    }
    std::optional<std::string> append(const std::string& path)
    {
        return list.changeSaved([&](auto& records) {
            records.push_back({ path, { 1, 2 } });
            return true;
        });
    }
    std::optional<std::string> remove(std::size_t row)
    {
        return list.changeSavedRow(row,
            [](auto& records, std::size_t at) { records.erase(records.begin() + static_cast<std::ptrdiff_t>(at)); });
    }

    TWListState instead = TWListState::Saved; // the state that the fallback was asked for
    List list{ listFolder, "L.plist", [this](TWListState state, const auto&) {
                  instead = state;
                  return List::Records{ { "default", { 1, 2 } } };
              } };
    int changes = 0;
};

}

TEST_F(TWRecordListTest, EditsStayUnsavedUntilTheyAreWrittenOrUndone)
{
    put({ "a", "b" });
    EXPECT_EQ(list.load(), TWListState::Saved);
    const auto given = list.live();
    list.edit([](auto& records) { records[0].path = "c"; });
    expect({ "c", "b" }, { "a", "b" }, true);
    EXPECT_EQ(given->front().path, "c") << "the same list";
    list.edit([](auto& records) { records[0].path = "a"; });
    expect({ "a", "b" }, { "a", "b" }, false);
    list.merge({ { "b", {} }, { "a", {} } });
    expect({ "a", "b" }, { "a", "b" }, false);
    list.merge({ { "new", { 1, 2 } }, { "b", {} }, { "new", {} } });
    expect({ "a", "b", "new" }, { "a", "b" }, false);
    EXPECT_EQ(append("d"), "");
    expect({ "a", "b", "new", "d" }, { "a", "b", "d" }, false);
    list.edit([](auto& records) { records.resize(10, { "too many", {} }); });
    EXPECT_NE(list.write().find("cannot be saved (it is full)"), std::string::npos);
    EXPECT_TRUE(list.hasUnsavedEdits());
    list.edit([](auto& records) { records.resize(4); });
    EXPECT_EQ(list.write(), "");
    expect({ "a", "b", "new", "d" }, { "a", "b", "new", "d" }, false);
}

TEST_F(TWRecordListTest, ACommandChangesTheSavedListAndTheSameRecordsOfTheLiveOne)
{
    put({ "a", "b", "c", "d" });
    list.load();
    list.setChanged([this] { changes++; });
    put({ "a", "b", "c" }); // by another process
    EXPECT_EQ(append("e"), "");
    expect({ "a", "b", "c", "e" }, { "a", "b", "c", "e" }, false);
    list.edit([](auto& records) {
        std::swap(records[0], records[2]);
        records[1].rest = { "edited" };
        records.erase(records.begin() + 3);
    });
    expect({ "c", "b?", "a" }, { "a", "b", "c", "e" }, true);
    EXPECT_EQ(remove(0), "");
    EXPECT_EQ(live(), (Lines{ "c", "b?" })) << "the equal one";
    EXPECT_EQ(remove(0), "");
    EXPECT_EQ(live(), Lines{ "c" }) << "the one that was edited since";
    EXPECT_EQ(remove(1), "");
    expect({ "c" }, { "c" }, false); // it was removed before
    EXPECT_EQ(remove(1), std::nullopt);
    const auto refused = list.changeSaved([](auto& records) {
        records.clear();
        return false;
    });
    EXPECT_EQ(refused, std::nullopt);
    EXPECT_EQ(changes, 4);
    expect({ "c" }, { "c" }, false);
    list.edit([](auto& records) { records.push_back({ "unsaved", { 1, 2 } }); });
    EXPECT_EQ(append("f"), "");
    expect({ "c", "unsaved", "f" }, { "c", "f" }, true);
}

TEST_F(TWRecordListTest, AChangeThatCannotBeSavedIsNone)
{
    put({ "a" });
    list.load();
    TWTemporaryFile writing(root.path(File));
    ASSERT_EQ(writing.create(), 0);
    EXPECT_NE(append("b")->find("is being saved by another program"), std::string::npos);
    EXPECT_NE(remove(0), "");
    expect({ "a" }, { "a" }, false);
}

TEST_F(TWRecordListTest, WhatCannotBeReadIsNotMissingAndIsKept)
{
    EXPECT_EQ(list.load(), TWListState::Missing);
    EXPECT_EQ(list.problem(), "");
    EXPECT_FALSE(list.hasUnsavedEdits());
    const std::tuple<std::string, TWListState, const char*> damaged[] = {
        { "broken", TWListState::Unreadable, "line 1: syntax error" },
        { "<plist><dict/></plist>", TWListState::Unreadable, "it does not hold a list" },
        { "<plist><array><array><string>a</string></array><true/></array></plist>", TWListState::NotRecords,
            "entry 2 is not an entry" },
        { *TWPropertyList::write(TWValue::Array(10, TWValue::Array{ "a" }), TWPropertyListFormat::XML),
            TWListState::NotRecords, "it is full" },
    };
    for (const auto& [bytes, state, reason] : damaged) {
        root.write(File, bytes);
        EXPECT_EQ(list.load(), state);
        EXPECT_EQ(instead, state);
        EXPECT_NE(list.problem().find(reason), std::string::npos) << list.problem();
        EXPECT_EQ(live(), Lines{ "default" });
        EXPECT_EQ(root.read(File), bytes);
        EXPECT_EQ(append("b"), "");
        EXPECT_EQ(list.problem(), "");
        EXPECT_EQ(saved(), (Lines{ "default", "b" }));
        EXPECT_EQ(ownFiles.read(list.keptAs(), 10'000).bytes, bytes) << list.keptAs();
    }
    std::filesystem::remove(root.path(File));
    root.link(File, "/nowhere/L.plist");
    EXPECT_EQ(list.load(), TWListState::Unreadable);
    std::filesystem::remove(root.path(File));
    root.folder(File);
    EXPECT_EQ(list.load(), TWListState::Unreadable);
    EXPECT_TRUE(list.problem().starts_with("The list \"" + root.path(File))) << list.problem();
    EXPECT_NE(list.write().find("Is a directory"), std::string::npos);
    std::filesystem::remove_all(dataFolder);
    root.link("home/.local/share/Tidewell", "/nowhere");
    EXPECT_EQ(list.load(), TWListState::Unreadable);
}

// The live list is based on a stand-in: it must not replace the repaired list without keeping it.
TEST_F(TWRecordListTest, ARepairedListIsTakenUpOrKept)
{
    root.write(File, "broken");
    list.load();
    put({ "repaired" });
    EXPECT_EQ(append("b"), "");
    EXPECT_EQ(live(), (Lines{ "repaired", "b" }));
    root.write(File, "broken");
    list.load();
    list.edit([](auto& records) { records.push_back({ "unsaved", { 1, 2 } }); });
    put({ "repaired" });
    EXPECT_EQ(append("b"), "");
    EXPECT_EQ(live(), (Lines{ "default", "unsaved", "b" }));
    EXPECT_EQ(list.write(), "");
    EXPECT_NE(root.read(File + std::string(".damaged")).find("repaired"), std::string::npos);
}

#include "formats/TWKeyValueDatabase.h"

#include "builders/TWTemporaryFolder.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <fstream>

namespace {

using Counts = std::vector<std::size_t>;

const char* const State
    = "CREATE TABLE ItemTable(key TEXT UNIQUE ON CONFLICT REPLACE, value BLOB);"
      "CREATE TABLE \"odd \"\"name\"(value, Key);CREATE TABLE other(key, value, more INTEGER PRIMARY KEY);"
      "INSERT INTO ItemTable VALUES('recent', 'SECRET'), ('Recent', 'kept'), ('old', 'OLDER');"
      "INSERT INTO \"odd \"\"name\" VALUES(1, 'recent'), (2, 'recent'), (3, x'726563656e74');"
      "INSERT INTO other VALUES('recent', 'kept', 1);";

const auto always = [] { return true; };

class TWKeyValueDatabaseTest : public testing::Test {
protected:
    ~TWKeyValueDatabaseTest() override { sqlite3_close(program_); }

    void run(const char* commands)
    {
        ASSERT_EQ(sqlite3_exec(program_, commands, nullptr, nullptr, nullptr), SQLITE_OK);
    }

    // Opens the database as the program that owns it does.
    void open() { ASSERT_EQ(sqlite3_open(path_.c_str(), &program_), SQLITE_OK); }

    void make(const char* commands)
    {
        open();
        run(commands);
    }

    void close()
    {
        sqlite3_close(program_);
        program_ = nullptr;
    }

    std::string text(const char* query)
    {
        std::string text;
        const auto add = [](void* result, int, char** columns, char**) {
            static_cast<std::string*>(result)->append(columns[0]).append(" ");
            return 0;
        };
        EXPECT_EQ(sqlite3_exec(program_, query, add, &text, nullptr), SQLITE_OK);
        return text;
    }

    // Names and contents of all files; not what the log's index holds, which is memory that readers share.
    std::string files() const
    {
        std::vector<std::string> files;
        for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string bytes(std::istreambuf_iterator<char>(file), {});
            files.push_back(entry.path().filename().string() + (entry.path().extension() == ".vscdb-shm" ? "" : bytes));
        }
        std::sort(files.begin(), files.end());
        std::string all;
        for (const std::string& file : files)
            all += file;
        return all;
    }

    void expectRefused() const
    {
        const std::string before = files();
        for (const TWFoundEntries& found :
            { TWKeyValueDatabase::find(path_, { "recent" }), TWKeyValueDatabase::cut(path_, { "recent" }, always) }) {
            EXPECT_NE(found.problem, "");
            EXPECT_EQ(found.counts, Counts());
        }
        EXPECT_EQ(files(), before);
    }

    const TWTemporaryFolder folder_;
    const std::string path_ = folder_.path() + "/st%20a?te.vscdb";
    sqlite3* program_ = nullptr;
};

}

TEST_F(TWKeyValueDatabaseTest, removesRowsAndTheirTraces)
{
    for (const char* mode : { "PRAGMA journal_mode = DELETE", "PRAGMA journal_mode = WAL" }) {
        std::filesystem::remove(path_);
        make(mode);
        run(State);
        run("PRAGMA secure_delete = OFF; DELETE FROM ItemTable WHERE key = 'old'");
        close();
        const std::string before = files();
        EXPECT_NE(before.find("OLDER"), before.npos);
        const std::vector<std::string> keys{ "none", "recent", "recent" };
        EXPECT_EQ(TWKeyValueDatabase::find(path_, keys).counts, (Counts{ 0, 3, 0 }));
        EXPECT_EQ(TWKeyValueDatabase::cut(path_, { "none" }, always).counts, Counts{ 0 });
        EXPECT_EQ(files(), before);
        const TWFoundEntries found = TWKeyValueDatabase::cut(path_, keys, always);
        EXPECT_EQ(found.problem, "");
        EXPECT_EQ(found.counts, (Counts{ 0, 3, 0 }));
        const std::string after = files();
        EXPECT_EQ(after.find("SECRET"), after.npos);
        EXPECT_EQ(after.find("OLDER"), after.npos);
        EXPECT_EQ(after.find("-wal"), after.npos);
        open();
        EXPECT_EQ(text("SELECT key || '=' || value FROM ItemTable UNION ALL SELECT value FROM \"odd \"\"name\""
                       " UNION ALL SELECT key || more FROM other"),
            "Recent=kept 3 recent1 ");
        close();
    }
}

TEST_F(TWKeyValueDatabaseTest, worksBesideTheProgram)
{
    make("PRAGMA journal_mode = WAL");
    run(State);
    run("CREATE TRIGGER t AFTER DELETE ON ItemTable BEGIN DELETE FROM other; END");
    const std::string before = files();
    EXPECT_EQ(TWKeyValueDatabase::find(path_, { "recent" }).counts, Counts{ 3 });
    EXPECT_EQ(files(), before);
    // A reader keeps the log from being emptied: the rows are gone, but not their traces.
    run("BEGIN; SELECT * FROM other");
    const TWFoundEntries found = TWKeyValueDatabase::cut(path_, { "recent" }, always);
    EXPECT_EQ(found.counts, Counts{ 3 });
    EXPECT_EQ(found.problem, "database is locked");
    run("COMMIT");
    EXPECT_EQ(text("SELECT count(*) FROM ItemTable UNION ALL SELECT count(*) FROM other"), "2 1 ");
}

TEST_F(TWKeyValueDatabaseTest, leavesWhatItCannotOpen)
{
    expectRefused(); // there is no file
    make(State);
    run("BEGIN EXCLUSIVE");
    expectRefused();
    run("ROLLBACK");
    close();
    const auto size = std::filesystem::file_size(path_);
    std::filesystem::resize_file(path_, size - 4096);
    expectRefused();
    std::filesystem::resize_file(path_, 60);
    expectRefused();
    std::filesystem::remove(path_);
    make(State);
    close();
    std::fstream file(path_, std::ios::in | std::ios::out | std::ios::binary);
    std::string bytes(std::istreambuf_iterator<char>(file), {});
    std::size_t inIndex = bytes.find("Recent");
    while (bytes.substr(inIndex).starts_with("Recentkept"))
        inIndex = bytes.find("Recent", inIndex + 1);
    file.seekp(std::streamoff(inIndex)).write("Rotten", 6).flush();
    bytes = files();
    EXPECT_EQ(TWKeyValueDatabase::cut(path_, { "recent" }, always).problem, "it is damaged");
    EXPECT_EQ(files(), bytes);
    std::filesystem::remove(path_);
    make("CREATE TABLE t(key, value, x); CREATE VIEW v AS SELECT key, value FROM t");
    close();
    expectRefused();
    std::filesystem::create_symlink(path_, folder_.path() + "/link");
    EXPECT_NE(TWKeyValueDatabase::find(folder_.path() + "/link", { "recent" }).problem, "");
}

TEST_F(TWKeyValueDatabaseTest, changesNeitherAnotherDatabaseNorTheNumbersOfOtherRows)
{
    make(State);
    run("CREATE TABLE plain(a); INSERT INTO plain VALUES(1), (2), (3); DELETE FROM plain WHERE a = 2");
    EXPECT_EQ(TWKeyValueDatabase::cut(path_, { "recent" }, [] { return false; }).problem, "it is another one by now");
    EXPECT_EQ(TWKeyValueDatabase::find(path_, { "recent" }).counts, Counts{ 3 });
    EXPECT_EQ(TWKeyValueDatabase::cut(path_, { "recent" }, always).counts, Counts{ 3 });
    EXPECT_EQ(text("SELECT rowid FROM plain"), "1 3 ");
    EXPECT_EQ(files().find("SECRET"), std::string::npos);
}

TEST_F(TWKeyValueDatabaseTest, findsKeysByKeywords)
{
    make("CREATE TABLE t(key TEXT, value);INSERT INTO t VALUES('x.recent', '{\"recent\":[1,{\"a\":2}],\"b\":3}'),"
         "('old', '{\"recent\":[1]}'), ('recent', '{\"damaged'), (x'726563656e74', '[]'), ('recent.blob', x'ff');");
    const std::vector<TWFoundKey> keys{ { "x.recent", { "[1, {a: 2}]", "3" } }, { "recent", { "{\"damaged" } },
        { "recent.blob", { "\xef\xbf\xbd" } } };
    EXPECT_EQ(TWKeyValueDatabase::findKeys(path_, { "recent" }), keys);
    EXPECT_EQ(TWKeyValueDatabase::findKeys(folder_.path() + "/none", { "recent" }), std::vector<TWFoundKey>());
}

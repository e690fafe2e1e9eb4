#include "formats/TWKeyValueDatabase.h"

#include "formats/TWJSONScanner.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sqlite3.h>
#include <string_view>

namespace {

constexpr std::string_view NoTable = "it has no table of keys and values";
constexpr std::string_view Damaged = "it is damaged";
constexpr std::string_view Another = "it is another one by now";
constexpr std::string_view OlderValues = "older values in it cannot be overwritten without a change of other tables";
constexpr std::string_view TooLarge = "it takes too long";

constexpr int LongestWait = 1000; // ms
constexpr int StepsBetweenCalls = 1'000'000; // of SQLite's virtual machine
constexpr int MostCalls = 500; // some ten seconds

// Tables with exactly the columns "key" and "value".
constexpr const char* Tables = "SELECT t.name FROM pragma_table_list AS t WHERE t.schema = 'main' AND t.type = 'table'"
                               " AND t.ncol = 2 AND (SELECT count(*) FROM pragma_table_info(t.name) AS c"
                               " WHERE lower(c.name) IN ('key', 'value')) = 2 ORDER BY t.name";
// Rows of tables without a number of their own would get other ones, which further tables may refer to.
constexpr const char* TablesThatForbidRewriting
    = "SELECT t.name FROM pragma_table_list AS t WHERE t.schema = 'main' AND t.type IN ('table', 'virtual')"
      " AND t.wr = 0 AND t.name NOT LIKE 'sqlite\\_%' ESCAPE '\\' AND (SELECT count(*) FROM pragma_table_info(t.name) "
      "AS c"
      " WHERE lower(c.name) IN ('key', 'value')) != t.ncol AND (SELECT group_concat(upper(c.type)) FROM"
      " pragma_table_info(t.name) AS c WHERE c.pk > 0) IS NOT 'INTEGER'";
constexpr const char* Condition = " WHERE \"key\" = ?1 COLLATE BINARY";

using Statement = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

std::string asIdentifier(std::string_view name)
{
    std::string result = "\"";
    for (const char byte : name)
        result.append(byte == '"' ? 2 : 1, byte);
    return result + '"';
}

// One open database. After the first failure all operations do nothing.
class Database final {
public:
    Database(const std::string& address, int flags)
        : database_(nullptr, sqlite3_close)
    {
        sqlite3* opened = nullptr;
        result_ = sqlite3_open_v2(address.c_str(), &opened, flags | SQLITE_OPEN_URI | SQLITE_OPEN_NOFOLLOW, nullptr);
        database_.reset(opened);
        if (result_ == SQLITE_OK)
            configure();
    }

    bool works() const { return result_ == SQLITE_OK; }
    std::string problem() const
    {
        return result_ == SQLITE_INTERRUPT ? std::string(TooLarge) : sqlite3_errstr(result_);
    }

    bool run(const char* command)
    {
        if (works())
            result_ = sqlite3_exec(database_.get(), command, nullptr, nullptr, nullptr);
        return works();
    }

    std::vector<std::string> texts(const char* query)
    {
        std::vector<std::string> texts;
        const Statement statement = prepared(query);
        while (step(statement.get()))
            texts.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), 0)),
                static_cast<std::size_t>(sqlite3_column_bytes(statement.get(), 0)));
        return texts;
    }

    // Calls the function with the two columns of each row until it returns false.
    template <typename Function>
    void forEachRow(const std::string& query, const Function& function)
    {
        const Statement statement = prepared(query.c_str());
        while (step(statement.get()) && function(bytes(statement.get(), 0), bytes(statement.get(), 1))) { }
    }

    // Runs a query of which the only parameter is the key. Returns the first number of its answer, if it has one.
    std::size_t number(const std::string& query, const std::string& key)
    {
        const Statement statement = prepared(query.c_str());
        if (works())
            result_ = sqlite3_bind_text64(statement.get(), 1, key.data(), key.size(), SQLITE_STATIC, SQLITE_UTF8);
        std::size_t number = 0;
        while (step(statement.get()))
            number = static_cast<std::size_t>(sqlite3_column_int64(statement.get(), 0));
        return number;
    }

    // Fails if another program still reads from the log.
    bool emptyLog()
    {
        result_ = sqlite3_wal_checkpoint_v2(database_.get(), nullptr, SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
        return works();
    }

    std::size_t changes() const { return static_cast<std::size_t>(sqlite3_changes64(database_.get())); }

private:
    // The database is another program's: nothing in its schema may run. Damaged ones must not take forever.
    void configure()
    {
        sqlite3_extended_result_codes(database_.get(), 0);
        sqlite3_busy_timeout(database_.get(), LongestWait);
        sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
        sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
        sqlite3_db_config(database_.get(), SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
        const auto count = [](void* calls) { return int(++*static_cast<int*>(calls) > MostCalls); };
        sqlite3_progress_handler(database_.get(), StepsBetweenCalls, count, &calls_);
    }

    Statement prepared(const char* query)
    {
        sqlite3_stmt* statement = nullptr;
        if (works())
            result_ = sqlite3_prepare_v2(database_.get(), query, -1, &statement, nullptr);
        return { statement, sqlite3_finalize };
    }

    static std::string_view bytes(sqlite3_stmt* row, int column)
    {
        const auto* data = static_cast<const char*>(sqlite3_column_blob(row, column));
        return { data ? data : "", static_cast<std::size_t>(sqlite3_column_bytes(row, column)) };
    }

    // True if there is a row.
    bool step(sqlite3_stmt* statement)
    {
        if (!works())
            return false;
        const int result = sqlite3_step(statement);
        if (result != SQLITE_ROW && result != SQLITE_DONE)
            result_ = result;
        return result == SQLITE_ROW;
    }

    std::unique_ptr<sqlite3, int (*)(sqlite3*)> database_;
    int result_ = SQLITE_OK;
    int calls_ = 0;
};

// All other characters could mean something in an address.
std::string address(const std::string& path, std::string_view parameters)
{
    constexpr std::string_view Digits = "0123456789ABCDEF";
    std::string address = "file:";
    for (const char byte : path) {
        const auto number = static_cast<unsigned char>(byte);
        if (byte == '/')
            address += byte;
        else
            address.append({ '%', Digits[number >> 4], Digits[number & 0xf] });
    }
    return address.append("?").append(parameters);
}

// How to read the database without writing anything. A database with a log gets files for it as soon as it is opened,
// unless it counts as immutable. That is true as long as there is no log, because then no other program has it open.
std::string_view readingMode(const std::string& path)
{
    std::string header(20, '\0');
    std::ifstream(path, std::ios::binary).read(header.data(), 20);
    std::error_code error;
    if (header[18] != 2 && header[19] != 2)
        return "mode=ro";
    return std::filesystem::exists(path + "-wal", error) ? "mode=ro&readonly_shm=1" : "mode=ro&immutable=1";
}

// The row as a key, with the items of its value if that is JSON.
TWFoundKey keyOfRow(std::string_view key, std::string_view value, const std::vector<std::string>& keywords)
{
    TWKeyCollector items(keywords);
    items.name(key);
    TWEntryCuts cuts(value, {}, &items);
    std::string problem;
    if (TWJSONScanner::recognises(value) && TWJSONScanner(value, cuts).scan(problem))
        return items.takeKeys().front();
    TWKeyCollector text(keywords);
    text.add(key, value);
    return text.takeKeys().front();
}

// Calls the function for each key and each table, and adds up what it returns. Fails if there is no table.
template <typename Function>
void forEachKey(
    Database& database, const std::vector<std::string>& keys, TWFoundEntries& found, const Function& function)
{
    const std::vector<std::string> tables = database.texts(Tables);
    if (tables.empty())
        found.problem = NoTable;
    found.counts.assign(keys.size(), 0);
    for (auto key = keys.begin(); key != keys.end(); ++key) {
        if (std::find(keys.begin(), key, *key) != key)
            continue; // handled already
        for (const std::string& table : tables)
            found.counts[std::size_t(key - keys.begin())] += function(asIdentifier(table) + Condition, *key);
    }
    if (!database.works())
        found.problem = database.problem();
    if (!found.problem.empty())
        found.counts.clear();
}

}

TWFoundEntries TWKeyValueDatabase::find(const std::string& path, const std::vector<std::string>& keys)
{
    TWFoundEntries found{ "SQLite", {}, {} };
    Database database(address(path, readingMode(path)), SQLITE_OPEN_READONLY);
    forEachKey(database, keys, found, [&](const std::string& rows, const std::string& key) {
        return database.number("SELECT count(*) FROM " + rows, key);
    });
    return found;
}

TWFoundEntries TWKeyValueDatabase::cut(
    const std::string& path, const std::vector<std::string>& keys, const std::function<bool()>& mayChange)
{
    TWFoundEntries found = find(path, keys);
    if (std::count(found.counts.begin(), found.counts.end(), 0) == std::ptrdiff_t(found.counts.size()))
        return found; // not even opened for writing, so that the file stays as it is
    Database database(address(path, "mode=rw"), SQLITE_OPEN_READWRITE);
    database.run("PRAGMA secure_delete = ON");
    database.run("PRAGMA ignore_check_constraints = ON");
    if (database.run("BEGIN IMMEDIATE") && !mayChange())
        return { found.format, std::string(Another), {} };
    if (database.works() && database.texts("PRAGMA integrity_check(1)") != std::vector<std::string>{ "ok" })
        return { found.format, std::string(Damaged), {} };
    forEachKey(database, keys, found, [&](const std::string& rows, const std::string& key) {
        database.number("DELETE FROM " + rows, key);
        return database.works() ? database.changes() : 0;
    });
    if (!found.problem.empty())
        return found; // closing the database takes the changes back
    if (!database.run("COMMIT"))
        found.counts.clear();
    // Pages that became free earlier may hold older values, and the log holds those just removed.
    const bool mayRewrite = database.texts(TablesThatForbidRewriting).empty();
    if ((mayRewrite && !database.run("VACUUM")) || !database.emptyLog())
        found.problem = database.problem();
    else if (!mayRewrite)
        found.problem = OlderValues;
    return found;
}

std::vector<TWFoundKey> TWKeyValueDatabase::findKeys(const std::string& path, const std::vector<std::string>& keywords)
{
    std::vector<TWFoundKey> keys;
    const TWKeyCollector matcher(keywords);
    Database database(address(path, readingMode(path)), SQLITE_OPEN_READONLY);
    for (const std::string& table : database.texts(Tables)) {
        const std::string query = "SELECT \"key\", substr(\"value\", 1, 1000000) FROM " + asIdentifier(table)
            + " WHERE typeof(\"key\") = 'text'";
        database.forEachRow(query, [&](std::string_view key, std::string_view value) {
            if (matcher.matches(key))
                keys.push_back(keyOfRow(key, value, keywords));
            return keys.size() < TWKeyCollector::MaximumKeys;
        });
    }
    return database.works() ? keys : std::vector<TWFoundKey>();
}

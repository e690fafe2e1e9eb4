#pragma once

#include "formats/TWFileFormats.h"

#include <functional>
#include <string>
#include <vector>

// Finds and removes rows in an SQLite database of another program. The rows are those of each table that has exactly
// the columns "key" and "value"; a database without such a table is refused. The path must be free of symbolic links,
// and must have no NUL byte. Each call waits up to a second for another program's lock. Any thread, but nobody else in
// this process may have the same file open meanwhile: when a process closes a file, it loses all its locks on it.
namespace TWKeyValueDatabase {

// The caller should refuse a longer one, because it is copied as a whole while it is locked.
inline constexpr std::size_t MaximumBytes = 512'000'000;

// Changes nothing, and makes no file beside the database.
TWFoundEntries find(const std::string& path, const std::vector<std::string>& keys);

// The keys, in the order of the tables and rows, that contain one of the keywords; with the items of the value if it is
// a JSON object or array, else with the value itself. Nothing if the database cannot be read.
std::vector<TWFoundKey> findKeys(const std::string& path, const std::vector<std::string>& keywords);

// Removes the rows in one transaction, then overwrites what is left of them in the database and in its log. If that
// fails, there is a problem although the counts are those of the rows that were removed. When the database is locked,
// asks mayChange whether it is still the one that is meant; if not, changes nothing.
TWFoundEntries cut(
    const std::string& path, const std::vector<std::string>& keys, const std::function<bool()>& mayChange);

}

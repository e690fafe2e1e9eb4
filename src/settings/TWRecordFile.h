#pragma once

#include "settings/TWDataFolder.h"

#include <string>
#include <string_view>

// The file of one list of records, of whatever kind, for TWRecordList. Main thread.
class TWRecordFile final {
public:
    TWRecordFile(const TWDataFolder&, std::string name);

    std::string path() const { return dataFolder_.file(name_); }

    TWListFile read(const std::string& path) const { return dataFolder_.read(path); }

    // Problem lines: a record, counted from 1, is not what the list should hold; the records together are refused.
    static std::string notARecord(const std::string& path, std::size_t number, std::string_view kind);
    static std::string unreadable(const std::string& path, const std::string& reason);
    std::string unwritable(const std::string& reason) const;

    // "" or one line that names the file and the remedy; the old file is then untouched.
    std::string write(TWValue::Array records, TWOldFile);

    // The second name of the damaged file that was kept last, or "".
    const std::string& keptAs() const { return keptAs_; }

private:
    const TWDataFolder& dataFolder_;
    const std::string name_;
    std::string keptAs_;
};

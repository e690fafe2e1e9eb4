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

    // The problem line of a list at the path whose record, counted from 1, is not of the kind.
    static std::string notARecord(const std::string& path, std::size_t number, std::string_view kind);

    // "" or one line that names the file and the remedy; the old file is then untouched.
    std::string write(TWValue::Array records, TWOldFile);

    // The second name of the damaged file that was kept last, or "".
    const std::string& keptAs() const { return keptAs_; }

private:
    const TWDataFolder& dataFolder_;
    const std::string name_;
    std::string keptAs_;
};

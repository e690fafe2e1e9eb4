#pragma once

#include "platform/TWBundle.h"
#include "platform/TWOwnFiles.h"
#include "platform/TWPlaces.h"
#include "plist/TWValue.h"

#include <optional>
#include <string>

// The result of reading a list file.
struct TWListFile {
    std::optional<TWValue::Array> records; // nothing if the file is missing or could not be read
    bool missing = false; // nothing is at the path, not even a dangling symbolic link
    std::string problem; // one line that names the file and the remedy if it exists but could not be read
};

// The result of writing a list file.
struct TWWrittenList {
    std::string problem; // "" or one line that names the file and the remedy; the old file is then untouched
    std::string keptAs; // the second name of a damaged file, if one was kept
};

// Differs on purpose: a file whose contents were not understood is kept beside itself as NAME.damaged before it is
// written over.
enum class TWOldFile { Replace, KeepAsDamaged };

// The folder of the settings lists, and the files in it. Main thread.
class TWDataFolder final {
public:
    TWDataFolder(const TWOwnFiles&, const TWPlaces&, const TWBundle&);

    // Absolute, or "" if the bundle does not name the folder. Then file() is "" too, which is the path of no file, and
    // nothing can be read or written.
    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const;

    // Creates the folder unless something is at its path already, and removes what killed writes have left in it. Does
    // not report errors, because reading or writing a list will report them.
    void make() const;

    TWListFile read(const std::string& path) const;

    TWWrittenList write(const std::string& name, TWValue::Array records, TWOldFile) const;

    // The problem lines of a list at the path whose contents were refused for this reason.
    static std::string unreadable(const std::string& path, const std::string& reason);
    static std::string unwritable(const std::string& path, const std::string& reason);

private:
    const TWOwnFiles& ownFiles_;
    std::string path_;
};

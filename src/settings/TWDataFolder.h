#pragma once

#include "platform/TWBundle.h"
#include "platform/TWOwnFiles.h"
#include "platform/TWPlaces.h"
#include "plist/TWValue.h"

#include <optional>
#include <string>

// What reading a list file gave.
struct TWListFile {
    std::optional<TWValue::Array> records; // nothing when the file is missing or could not be read
    bool missing = false;
    std::string problem; // one line that names the file and the remedy, when it is there but could not be read
};

// Differs on purpose: a file whose contents were not understood is kept beside itself as NAME.damaged before it is
// written over.
enum class TWOldFile { Replace, KeepAsDamaged };

// The folder of the settings lists, and the files in it. Main thread.
class TWDataFolder final {
public:
    TWDataFolder(const TWOwnFiles&, const TWPlaces&, const TWBundle&);

    const std::string& path() const { return path_; }
    std::string file(const std::string& name) const;

    // Nothing when a file stands at the path already; an error is not reported, since whoever reads or writes a list
    // will meet it.
    void make() const;

    TWListFile read(const std::string& path) const;

    // "" or one line that names the file and the remedy; the old file is then untouched.
    std::string write(const std::string& name, const TWValue::Array& records, TWOldFile) const;

private:
    std::string keepDamaged(const std::string& path) const;

    const TWOwnFiles& ownFiles_;
    std::string path_;
};

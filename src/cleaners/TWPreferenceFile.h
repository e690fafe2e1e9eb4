#pragma once

#include "formats/TWFileFormats.h"
#include "platform/TWPreferenceFiles.h"

#include <memory>

// One preference file of another program, as an entry of a held folder; a symbolic link there is refused. Any thread;
// only one file is read or written at a time.
class TWPreferenceFile final {
public:
    // What was found in the file, or why it cannot be opened.
    struct Found {
        TWFileFacts facts;
        TWFoundEntries entries; // the problem is set if the file cannot be opened
        bool missing = false; // because there is no such file
    };

    // What was done to the file.
    struct Removed : Found {
        bool hasChanged = false; // since it was seen, or the keys hold entries of others; then nothing was done
        std::string problem; // "" or one clause why the change could not be written
        std::string traces; // "" or one clause why the file may still hold traces of what was removed
        TWFileFacts now; // after the change
    };

    // The path of the folder is free of links; the name is an entry of it. The references must outlive the object.
    TWPreferenceFile(const TWPreferenceFiles&, const TWFileSystem&, const TWHeldFolder& folder, std::string realFolder,
        std::string name);

    Found find(const std::vector<std::string>& keys) const;

    // Removes the entries and writes the file back, even if there are none. If it was seen before, it must be as it was
    // then, and exactly the entries that were found then must go. Does not write after a cancellation.
    Removed remove(const std::vector<std::string>& keys, const Found* seen, const TWCancellation&) const;

    // The keys that contain one of the keywords and hold a list; see TWFileFormats::findKeys(). Nothing if the file
    // cannot be read.
    std::vector<TWFoundKey> findKeywords(const std::vector<std::string>& keywords) const;

private:
    struct Opened {
        TWPreferenceFiles::Contents contents; // without the bytes of a database
        bool isDatabase = false;
        std::string problem;
        bool missing = false;
    };

    Opened open() const;
    Removed removeNow(
        const std::vector<std::string>& keys, const Found* seen, const TWCancellation&, bool& isStale) const;
    Removed removeRows(const std::vector<std::string>& keys, const TWFileFacts&) const;
    std::string problemBeside() const;
    std::string path() const;
    bool isStill(const TWFileFacts&) const;

    const TWPreferenceFiles& files_;
    const TWFileSystem& fileSystem_;
    const TWHeldFolder& folder_;
    const std::string realFolder_;
    const std::string name_;
};

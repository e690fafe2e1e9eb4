#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWPlaces.h"

// A folder that holds nothing but logs, or a log file.
struct TWLogSource {
    std::string name; // of the program, for the user; safe for one line, but not unique
    std::string path; // absolute, not resolved; the last component is no symbolic link
    bool isFolder = false;
    TWFileIdentity identity{}; // of what the path leads to

    friend bool operator==(const TWLogSource&, const TWLogSource&) = default;
};

// Where programs write logs of this user. The logs of the system are in TWPlaces::systemLogs.
class TWLogSources {
public:
    virtual ~TWLogSources() = default;

    // Those that exist now, sorted by name and path; each folder or file once, whatever leads to it, and none inside
    // another. Chat histories, caches and folders that hold anything else than logs are never among them. Looks at the
    // disk. Any thread.
    virtual std::vector<TWLogSource> userSources(const TWPlaces&) const = 0;
};

#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWLogSources.h"
#include "platform/TWPlaces.h"

// Where a log lies, with all links before its root resolved and none below it.
struct TWLogPlace {
    static constexpr auto Ambiguous = "its path is not written out.";
    static constexpr auto BehindLink = "a link leads there from its log folder.";

    std::string path; // absolute, for messages
    std::string realFolder; // of its parent folder
    std::string name;
    const char* objection = nullptr; // why it is none of the logs, a clause: "it does not lie in a log folder."
};

// The log folders and files of this user and of the system as they are now. Only what lies there counts as a log. A
// value; any thread.
class TWLogRoots final {
public:
    TWLogRoots(const TWPlaces&, std::vector<TWLogSource> sources);

    const std::string& systemLogs() const { return places_.systemLogs; }
    const std::vector<TWLogSource>& sources() const { return sources_; }

    // The one that the absolute path is, or is in; nullptr if there is none.
    const TWLogSource* sourceOf(const std::string& path) const;

    // The log folder that the absolute path is, or is in; "" if there is none.
    std::string folderOf(const std::string& path) const;

    // True for the folder of the system's logs and for a source that is a folder. Such a path may be a symbolic link.
    bool isRoot(const std::string& path) const;

    // Finds out where a chosen log lies; the path may begin with "~". Does not look at the log itself. Sets error to
    // the errno if its root could not be looked at.
    TWLogPlace find(const TWFileSystem&, const std::string& itemPath, int& error) const;

private:
    TWPlaces places_;
    std::vector<TWLogSource> sources_;
};

#pragma once

#include "platform/TWRunningApplications.h"

#include <optional>
#include <string>
#include <vector>

struct TWApplication {
    std::string identifier; // what the desktop calls it, such as "org.kde.okular"
    std::string name; // not translated; "" if it has none
    std::string executable; // file name of the program that it starts; "" if that cannot be told
    std::string displayName; // in the user's language, safe for one line; never ""
    std::string icon; // a name in the icon theme or an absolute path; "" if it has none
    std::string path; // of the file that describes it, or of the program
    std::string flatpak; // its identifier as a Flatpak; "" if it is not one

    friend bool operator==(const TWApplication&, const TWApplication&) = default;
};

// The applications that this user has. Reads only. Any thread; all but the two lists of paths read many files and
// belong into the background. Names and identifiers are what the files say and may hold any bytes.
class TWApplications {
public:
    virtual ~TWApplications() = default;

    // Those that the desktop shows to this user, each once, sorted by displayName as the user's language does. Files
    // that cannot be read are left out.
    virtual std::vector<TWApplication> installed() const = 0;

    // The application of a file that describes one, wherever it is and even if the desktop does not show it, or of a
    // program, whose file name is then identifier and executable. The path is absolute; a symbolic link at its end is
    // followed. On failure returns nothing and sets problem to one sentence.
    virtual std::optional<TWApplication> open(const std::string& path, std::string& problem) const = 0;

    // Where the application keeps a list of recent items of its own in the desktop's common format, if it does.
    virtual std::string sharedFileList(const TWApplication&) const = 0;

    // Where the application may keep its preferences, the likeliest place first, each once. Most of them do not exist.
    virtual std::vector<std::string> preferenceFiles(const TWApplication&) const = 0;

    // What runs now. A process that cannot be looked at does not count; in a sandbox only those count whose program is
    // below the sandbox's root.
    virtual TWRunningApplications running() const = 0;
};

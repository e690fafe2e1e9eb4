#pragma once

#include <string>
#include <vector>

// The paths that Tidewell uses for this user on this machine: absolute, without trailing slashes, as bytes. Made once
// at the start; in a sandbox all of the user's folders are below sandboxRoot.
struct TWPlaces {
    std::string home;
    std::vector<std::string> realHomes; // the user's own: home, or what it would be outside the sandbox, and the
                                        // home folder of the account
    std::vector<std::string> realOwnFolders; // of the settings and the lists as they are outside a sandbox
    std::string configHome;
    std::string dataHome;
    std::string stateHome;
    std::string cacheHome;
    std::string runtimeFolder; // "" when the session has none
    std::string temporaryFolder;
    std::string systemLogs;
    std::string trash; // holds files/ and info/
    std::string resources; // Info.plist and the files beside it
    std::string rm;
    std::vector<std::string> rmOptions; // passed to rm in addition to -rf
    std::string srm;
    std::string eject;
    std::string window; // the program tidewell-window
    std::string notifier; // the plug-in that posts notifications
    std::string desktop; // the plug-in that closes other programs' windows
    std::string sandboxRoot; // a real path; "" outside a sandbox

    // The folder of the settings file.
    std::string settingsFolder() const { return configHome + "/Tidewell"; }
    std::string settingsFile() const { return settingsFolder() + "/Tidewell.plist"; }

    bool sandboxed() const { return !sandboxRoot.empty(); }

    // Replaces a leading "~" or XDG variable, such as "$XDG_DATA_HOME", of a stored path. "~/.local/share",
    // "~/.config", "~/.cache" and "~/.local/state" become the folders that the XDG variables name. Leaves the rest of
    // the path as it is, including "..".
    std::string expand(const std::string& path) const;

    // True for a stored path that is absolute or begins with "~" or a variable that expand() knows.
    static bool isStoredPath(const std::string& path);

    // Like expand(), then removes "." and ".." without resolving symbolic links.
    std::string standardize(const std::string& path) const;

    // True if the path begins with a folder that a variable has moved, such as "~/.cache", and leaves it with a "..":
    // then it is not clear whether the usual or the moved folder is left.
    bool leavesMovedFolder(const std::string& path) const;

    // The reverse of standardize(), for storing and display: begins a path at or below the home folder with "~", unless
    // standardize() would turn the result into another path.
    std::string abbreviate(const std::string& path) const;
};

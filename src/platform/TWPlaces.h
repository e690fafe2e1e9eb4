#pragma once

#include <string>
#include <vector>

// Where everything is on this machine for this user. Absolute paths without trailing slashes, as bytes. Made once at
// start; in a sandbox every one of the user's places lies below sandboxRoot.
struct TWPlaces {
    std::string home;
    std::string realHome; // the user's own home folder; differs from home only in a sandbox
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
    std::vector<std::string> rmOptions; // that this system's rm gets besides -rf
    std::string srm;
    std::string eject;
    std::string window; // the program of the window
    std::string sandboxRoot; // a real path; "" outside a sandbox

    // Holds the settings file.
    std::string settingsFolder() const { return configHome + "/Tidewell"; }
    std::string settingsFile() const { return settingsFolder() + "/Tidewell.plist"; }

    bool sandboxed() const { return !sandboxRoot.empty(); }

    // Replaces a leading "~" or "$XDG_DATA_HOME" of a stored path ("~/.local/share", "~/.config", "~/.cache" and
    // "~/.local/state" lead to where the user has moved those folders). Leaves the rest as it is, ".." included.
    std::string expand(const std::string& path) const;

    // As expand(), then standardised: "." and ".." removed, links not resolved.
    std::string standardize(const std::string& path) const;

    // The reverse, for storing and showing: a path at or below the home folder begins with "~", unless standardize()
    // would then lead elsewhere.
    std::string abbreviate(const std::string& path) const;
};

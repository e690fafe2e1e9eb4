#pragma once

#include <string>

// Where everything is on this machine for this user. Absolute paths without trailing slashes, as bytes. Made once at
// start; in a sandbox every one of the user's places lies below sandboxRoot.
struct TWPlaces {
    std::string home;
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
    std::string srm;
    std::string eject;
    std::string sandboxRoot; // a real path; "" outside a sandbox

    bool sandboxed() const { return !sandboxRoot.empty(); }

    // A stored path made absolute: a leading "$XDG_DATA_HOME" or "~" expanded ("~/.local/share", "~/.config",
    // "~/.cache" and
    // "~/.local/state" lead to where the user has moved those folders), then standardised.
    std::string standardize(const std::string& path) const;

    // The reverse, for storing and showing: a path at or below the home folder begins with "~", unless standardize()
    // would then lead elsewhere.
    std::string abbreviate(const std::string& path) const;
};

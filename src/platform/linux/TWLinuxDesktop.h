#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

// A window of a program on this machine.
struct TWLinuxWindow {
    std::int64_t process = 0;
    std::vector<std::string> names; // by which its application may be known
};

// A network folder, a phone or the like that the user has opened with gvfs, the service of the desktops for these.
struct TWLinuxLocation {
    std::string owner; // the program that serves it, by a name that the bus never gives again
    std::string object; // of that program
    std::string name; // for the user
    std::string path; // where programs that know nothing of gvfs find it; "" if nowhere
};

struct TWLinuxLocationList {
    std::string service; // that has answered, by a name that the bus never gives again
    std::vector<TWLinuxLocation> locations;
};

// The windows and the message bus of the user's session. Each operation may wait for a server that does not answer, and
// returns nothing if it could not be reached or has failed: then nobody knows. One thread at a time.
class TWLinuxDesktop {
public:
    virtual ~TWLinuxDesktop() = default;

    // The windows on the X server, which a user could close; those that are on Wayland alone cannot be seen.
    virtual std::optional<std::vector<TWLinuxWindow>> windows() = 0;

    // Asks these windows of the processes to close. False if there are none.
    virtual std::optional<bool> closeWindows(const std::set<std::int64_t>& processes) = 0;

    // Tells the processes over the session's message bus to quit. False if none of them offers that.
    virtual std::optional<bool> quitOverBus(const std::set<std::int64_t>& processes) = 0;

    // The locations that file managers show. Does not start gvfs: nothing as well if it does not run.
    virtual std::optional<TWLinuxLocationList> locations(std::chrono::milliseconds patience) = 0;

    // Asks the owner to close the location, also while files on it are open if forced. Returns the objection in one
    // line, or "". Whether it is closed is for the list to say.
    enum class Force { No, Yes };
    virtual std::optional<std::string> close(const TWLinuxLocation&, Force, std::chrono::milliseconds patience) = 0;
};

// The function that the plug-in exports. The caller owns the result.
extern "C" TWLinuxDesktop* TWMakeLinuxDesktop();

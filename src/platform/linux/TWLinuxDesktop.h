#pragma once

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
};

// The function that the plug-in exports. The caller owns the result.
extern "C" TWLinuxDesktop* TWMakeLinuxDesktop();

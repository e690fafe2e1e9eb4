#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

// A window that a user could close.
struct TWXWindow {
    xcb_window_t identifier = 0;
    xcb_window_t root = 0; // of its screen
    std::int64_t process = 0; // that has made it; 0 if that is unknown or runs on another machine
};

// A connection to the X server of the session. Every operation waits for the server's answer.
class TWXServer final {
public:
    TWXServer();

    // False if the server cannot be reached, or has ended the connection: then the other answers are not complete.
    bool isConnected() const { return xcb_connection_has_error(connection_.get()) == 0; }

    // The windows that a window manager manages, on all desktops; without a manager those that can be seen.
    std::vector<TWXWindow> windows() const;

    // The names by which its application may be known: class, instance and identifier.
    std::vector<std::string> names(const TWXWindow&) const;

    // Asks the window to close, as the button in its title bar does. False if it cannot be asked.
    bool close(const TWXWindow&) const;

private:
    struct Found {
        xcb_window_t root;
        bool hasManager;
        std::vector<TWXWindow>& windows;
    };

    xcb_atom_t atom(const std::string& name) const;
    std::string text(xcb_window_t, const char* name) const;
    std::vector<std::uint32_t> numbers(xcb_window_t, const char* name) const;
    bool supports(xcb_window_t, const char* list, const char* name) const;
    bool hasManager(xcb_window_t root) const;
    bool isVisible(xcb_window_t) const;
    void addBelow(xcb_window_t parent, int depth, const Found&) const;
    std::int64_t processOf(xcb_window_t) const;
    void send(xcb_window_t destination, xcb_window_t about, const char* type, std::uint32_t first,
        std::uint32_t second) const;

    const std::unique_ptr<xcb_connection_t, void (*)(xcb_connection_t*)> connection_;
    mutable std::map<std::string, xcb_atom_t> atoms_;
};

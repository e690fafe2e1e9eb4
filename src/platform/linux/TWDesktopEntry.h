#pragma once

#include <optional>
#include <string>
#include <vector>

// What a .desktop file of an application says.
struct TWDesktopEntry {
    std::string name; // untranslated
    std::string displayName; // in the language of the environment
    std::string icon;
    std::vector<std::string> command; // with the field codes, such as "%U"
    std::string tryExec; // a program without which the application counts as not installed
    std::string flatpak;
    std::vector<std::string> onlyShowIn, notShowIn; // names of desktops
    std::string windowClass; // of its windows on X11
    bool runsInTerminal = false;
    bool isHidden = false; // counts as deleted
    bool isInMenus = true;
    bool isStartedOverBus = false; // and needs no command

    // Returns nothing if the text is not such a file. Values that are not valid UTF-8 count as missing. Any thread.
    static std::optional<TWDesktopEntry> parse(const std::string& text);

    // Whether the current desktop, which may have several names, shows it in its menus.
    bool isShownBy(const std::vector<std::string>& desktops) const;
};

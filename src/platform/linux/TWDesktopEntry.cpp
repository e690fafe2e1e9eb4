#include "platform/linux/TWDesktopEntry.h"

#include "platform/linux/TWLinuxProgram.h"

#include <glib.h>

#include <algorithm>
#include <memory>

namespace {

// The group of a .desktop file that describes the application itself.
class Group {
public:
    explicit Group(const std::string& text)
        : isRead_(g_key_file_load_from_data(file_.get(), text.data(), text.size(), G_KEY_FILE_NONE, nullptr))
    {
    }

    bool isRead() const { return isRead_; }
    std::string text(const char* key) const { return taken(g_key_file_get_string(file_.get(), Name, key, nullptr)); }
    std::string translated(const char* key) const
    {
        return taken(g_key_file_get_locale_string(file_.get(), Name, key, nullptr, nullptr));
    }
    bool isTrue(const char* key) const { return g_key_file_get_boolean(file_.get(), Name, key, nullptr); }
    std::vector<std::string> list(const char* key) const
    {
        gsize length = 0;
        const std::unique_ptr<char*, void (*)(char**)> texts(
            g_key_file_get_string_list(file_.get(), Name, key, &length, nullptr), g_strfreev);
        return { texts.get(), texts.get() + length };
    }

private:
    static constexpr auto Name = G_KEY_FILE_DESKTOP_GROUP;

    static std::string taken(char* text)
    {
        const std::unique_ptr<char, void (*)(gpointer)> owner(text, g_free);
        return text ? text : "";
    }

    const std::unique_ptr<GKeyFile, void (*)(GKeyFile*)> file_{ g_key_file_new(), g_key_file_free };
    const bool isRead_;
};

bool contains(const std::vector<std::string>& texts, const std::string& text)
{
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

}

std::optional<TWDesktopEntry> TWDesktopEntry::parse(const std::string& text)
{
    const Group group(text);
    if (!group.isRead() || group.text("Type") != "Application")
        return std::nullopt;
    TWDesktopEntry entry;
    entry.name = group.text("Name");
    entry.displayName = group.translated("Name");
    entry.icon = group.translated("Icon");
    entry.command = TWLinuxProgram::words(group.text("Exec"));
    entry.tryExec = group.text("TryExec");
    entry.flatpak = group.text("X-Flatpak");
    entry.onlyShowIn = group.list("OnlyShowIn");
    entry.notShowIn = group.list("NotShowIn");
    entry.windowClass = group.text("StartupWMClass");
    entry.runsInTerminal = group.isTrue("Terminal");
    entry.isHidden = group.isTrue("Hidden");
    entry.isInMenus = !group.isTrue("NoDisplay");
    entry.isStartedOverBus = group.isTrue("DBusActivatable");
    return entry;
}

bool TWDesktopEntry::isShownBy(const std::vector<std::string>& desktops) const
{
    if (isHidden || !isInMenus)
        return false;
    for (const auto& desktop : desktops) {
        if (contains(onlyShowIn, desktop))
            return true;
        if (contains(notShowIn, desktop))
            return false;
    }
    return onlyShowIn.empty();
}

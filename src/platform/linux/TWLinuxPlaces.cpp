#include "platform/linux/TWLinuxPlaces.h"

#include "support/TWPath.h"

#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace {

constexpr auto NoHome = "/nonexistent";

// The home folder in the user database. Not every account has one.
std::string accountHome()
{
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir && *user->pw_dir == '/' ? TWPath::standardize(user->pw_dir, "") : NoHome;
}

std::string homeFolder()
{
    const char* home = std::getenv("HOME");
    return home && *home == '/' ? TWPath::standardize(home, "") : accountHome();
}

std::string folderFrom(const char* variable, const std::string& fallback)
{
    const char* value = std::getenv(variable);
    return value && *value == '/' ? TWPath::standardize(value, "") : fallback;
}

void addInstallation(TWPlaces& places)
{
    char program[4096];
    const auto length = readlink("/proc/self/exe", program, sizeof program);
    const std::string path(program, length > 0 ? static_cast<std::size_t>(length) : 0);
    // bin/tidewell, or libexec/tidewell/tidewell-window.
    const auto folder = TWPath::parent(path);
    const auto above = TWPath::parent(folder);
    const std::string prefix(folder.ends_with("/libexec/tidewell") ? TWPath::parent(above) : above);
    places.resources = prefix + "/share/tidewell";
    places.rm = "/bin/rm";
    // So that rm does not enter a volume that is mounted while it works: neither below the item nor on the item itself.
    places.rmOptions = { "--one-file-system", "--preserve-root=all" };
    places.srm = prefix + "/libexec/tidewell/srm";
    places.eject = prefix + "/libexec/tidewell/eject";
    places.window = prefix + "/libexec/tidewell/tidewell-window";
}

void addDefaults(TWPlaces& places)
{
    places.configHome = places.home + "/.config";
    places.dataHome = places.home + "/.local/share";
    places.stateHome = places.home + "/.local/state";
    places.cacheHome = places.home + "/.cache";
}

}

TWPlaces TWLinuxPlaces()
{
    TWPlaces places;
    places.home = homeFolder();
    addDefaults(places);
    places.configHome = folderFrom("XDG_CONFIG_HOME", places.configHome);
    places.dataHome = folderFrom("XDG_DATA_HOME", places.dataHome);
    places.stateHome = folderFrom("XDG_STATE_HOME", places.stateHome);
    places.cacheHome = folderFrom("XDG_CACHE_HOME", places.cacheHome);
    places.runtimeFolder = folderFrom("XDG_RUNTIME_DIR", "");
    places.temporaryFolder = folderFrom("TMPDIR", "/tmp");
    places.systemLogs = "/var/log";
    places.trash = places.dataHome + "/Trash";
    places.realHomes = { places.home, accountHome() };
    places.realOwnFolders = { places.settingsFolder(), places.dataHome + "/Tidewell" };
    addInstallation(places);
    return places;
}

TWPlaces TWLinuxSandboxPlaces(const std::string& root)
{
    TWPlaces places;
    places.sandboxRoot = root;
    places.home = root + "/home";
    const auto real = TWLinuxPlaces();
    places.realHomes = real.realHomes;
    places.realOwnFolders = real.realOwnFolders;
    addDefaults(places);
    places.runtimeFolder = root + "/run";
    places.temporaryFolder = root + "/tmp";
    places.systemLogs = root + "/var/log";
    places.trash = places.dataHome + "/Trash";
    addInstallation(places);
    return places;
}

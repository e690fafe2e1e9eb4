#include "platform/linux/TWLinuxPlaces.h"

#include "platform/TWAmbiguousPath.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <cerrno>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace {

constexpr auto Ambiguous
    = "The environment variable %@ is \"%@\", which can mean two different folders, because \"..\" follows a link or a "
      "missing folder in it. Please set it to a path without \"..\".\n";
constexpr auto AmbiguousHome
    = "Your home folder is \"%@\" in the list of users, which can mean two different folders, because \"..\" follows a "
      "link in it. Please set HOME to a path without \"..\".\n";
constexpr auto NoProgram
    = "Tidewell cannot tell where it is installed (%@ could not be read: %@). Please start it where "
      "/proc is mounted.\n";

constexpr auto ThisProgram = "/proc/self/exe";
constexpr const char* Variables[]
    = { "HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_STATE_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR", "TMPDIR" };

// The value of an environment variable, or "" if it is unset or not an absolute path.
std::string absoluteValue(const char* variable)
{
    const char* value = std::getenv(variable);
    return value && *value == '/' ? value : "";
}

// The home folder of this account in the list of users; not every account has one.
std::string listedHome()
{
    const passwd* user = getpwuid(getuid());
    return user && user->pw_dir && *user->pw_dir == '/' ? user->pw_dir : "/nonexistent";
}

std::string folderFrom(const char* variable, const std::string& fallback)
{
    const auto value = absoluteValue(variable);
    return value.empty() ? fallback : TWPath::standardize(value, "");
}

std::string homeFolder()
{
    const auto home = absoluteValue("HOME");
    return TWPath::standardize(home.empty() ? listedHome() : home, "");
}

// Returns "" and sets error to the errno if the system does not tell.
std::string programPath(int& error)
{
    char program[4096];
    const auto length = readlink(ThisProgram, program, sizeof program);
    error = length < 0 ? errno : 0;
    return { program, length > 0 ? static_cast<std::size_t>(length) : 0 };
}

void addInstallation(TWPlaces& places)
{
    int error = 0;
    const auto path = programPath(error);
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
    places.notifier = prefix + "/libexec/tidewell/notifier.so";
    places.desktop = prefix + "/libexec/tidewell/desktop.so";
}

void addDefaults(TWPlaces& places)
{
    places.configHome = places.home + "/.config";
    places.dataHome = places.home + "/.local/share";
    places.stateHome = places.home + "/.local/state";
    places.cacheHome = places.home + "/.cache";
}

}

std::string TWLinuxProblemOfPlaces(const TWFileSystem& fileSystem)
{
    for (const auto* variable : Variables) {
        if (const auto value = absoluteValue(variable); TWIsAmbiguousPath(fileSystem, {}, value))
            return TWText::fill(Ambiguous, { variable, TWText::oneLine(value) });
    }
    if (absoluteValue("HOME").empty() && TWIsAmbiguousPath(fileSystem, {}, listedHome()))
        return TWText::fill(AmbiguousHome, { TWText::oneLine(listedHome()) });
    int error = 0;
    if (programPath(error).empty())
        return TWText::fill(NoProgram, { ThisProgram, TWErrorText(error) });
    return "";
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
    places.realHomes = { places.home, TWPath::standardize(listedHome(), "") };
    places.realOwnFolders = { places.settingsFolder(), places.dataHome + "/Tidewell" };
    addInstallation(places);
    return places;
}

TWPlaces TWLinuxSandboxPlaces(const std::string& root, const TWPlaces& real)
{
    TWPlaces places;
    places.sandboxRoot = root;
    places.home = root + "/home";
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

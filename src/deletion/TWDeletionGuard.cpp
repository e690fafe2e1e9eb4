#include "deletion/TWDeletionGuard.h"

#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>

namespace {

constexpr auto Refused = "Refused to delete \"%@\": %@";
constexpr auto Empty = "the path is empty.";
constexpr auto Relative = "the path does not begin with \"/\" or \"~\".";
constexpr auto NotAPath = "no path can hold a byte of 0.";
constexpr auto CannotTell = "the folders on the way to it could not be looked at.";
constexpr auto OutsideSandbox = "it lies outside the sandbox.";
constexpr auto SandboxItself = "it is the sandbox itself.";
constexpr auto Root = "it is the whole file system.";
constexpr auto SystemFolder = "it is a folder of the system.";
constexpr auto InsideSystem = "it belongs to the system.";
constexpr auto Home = "it is the home folder.";
constexpr auto AboveHome = "the home folder lies inside it.";
constexpr auto DataFolder = "it is the folder where Tidewell keeps its settings.";
constexpr auto InsideDataFolder = "it belongs to the settings of Tidewell.";
constexpr auto AboveDataFolder = "the folder where Tidewell keeps its settings lies inside it.";
constexpr auto NoMountTable = "the list of mounted volumes could not be read.";
constexpr auto MountPoint = "a volume is mounted there.";
constexpr auto MountInside = "a volume is mounted inside it.";

// What lies in these may be deleted when a rule names it; the folders themselves may not.
constexpr std::string_view SystemFolders[] = { "/dev", "/dev/shm", "/etc", "/home", "/lost+found", "/media", "/mnt",
    "/opt", "/root", "/run", "/run/lock", "/run/media", "/run/user", "/snap", "/srv", "/tmp", "/usr/local", "/var",
    "/var/backups", "/var/cache", "/var/lib", "/var/local", "/var/lock", "/var/log", "/var/mail", "/var/opt",
    "/var/run", "/var/spool", "/var/tmp" };

// These belong to the system through and through.
constexpr std::string_view SystemTrees[]
    = { "/bin", "/boot", "/lib", "/lib32", "/lib64", "/libx32", "/proc", "/sbin", "/sys", "/usr" };
constexpr std::string_view LocalTree = "/usr/local";

// A folder that does not exist yet has at least a real parent.
std::string realFolder(const TWFileSystem& fileSystem, const std::string& path)
{
    if (const auto inside = fileSystem.realPath(path, TWLinkAtEnd::Follow))
        return *inside;
    return fileSystem.realPath(path).value_or(path);
}

}

TWDeletionGuard::TWDeletionGuard(
    const TWPlaces& places, const TWFileSystem& fileSystem, TWMountTable& mountTable, const std::string& dataFolder)
    : places_(places)
    , fileSystem_(fileSystem)
    , mountTable_(mountTable)
    , home_(realFolder(fileSystem, places.home))
    , dataFolder_(realFolder(fileSystem, dataFolder))
    , settingsFolder_(realFolder(fileSystem, places.configHome + "/Tidewell"))
{
}

std::string TWDeletionGuard::objection(const std::string& path) const
{
    const char* found = reason(path);
    return found ? TWText::fill(Refused, { path, found }) : "";
}

const char* TWDeletionGuard::reason(const std::string& path) const
{
    if (path.empty())
        return Empty;
    if (path.front() != '/')
        return Relative;
    // The deletion tool would get only what stands before it.
    if (path.find('\0') != std::string::npos)
        return NotAPath;
    const auto real = fileSystem_.realPath(path);
    if (!real && places_.sandboxed() && !TWPath::isAtOrBelow(path, places_.sandboxRoot))
        return OutsideSandbox;
    // When a folder on the way is missing, there is nothing that could be deleted, and the deletion tool will find the
    // same.
    if (!real)
        return fileSystem_.look(path).presence != TWPresence::Gone ? CannotTell : nullptr;
    if (places_.sandboxed() && *real == places_.sandboxRoot)
        return SandboxItself;
    if (places_.sandboxed() && !TWPath::isAtOrBelow(*real, places_.sandboxRoot))
        return OutsideSandbox;
    return reasonAtRealPath(*real);
}

const char* TWDeletionGuard::reasonAtRealPath(const std::string& path) const
{
    if (path == "/")
        return Root;
    if (std::find(std::begin(SystemFolders), std::end(SystemFolders), path) != std::end(SystemFolders))
        return SystemFolder;
    for (const auto tree : SystemTrees) {
        if (TWPath::isAtOrBelow(path, tree) && !TWPath::isAtOrBelow(path, LocalTree))
            return path == tree ? SystemFolder : InsideSystem;
    }
    if (TWPath::isAtOrBelow(home_, path))
        return home_ == path ? Home : AboveHome;
    if (TWPath::isAtOrBelow(dataFolder_, path))
        return dataFolder_ == path ? DataFolder : AboveDataFolder;
    if (TWPath::isAtOrBelow(path, dataFolder_) || TWPath::isAtOrBelow(path, settingsFolder_))
        return InsideDataFolder;
    const auto& mountPoints = mountTable_.mountPoints();
    if (mountPoints.empty())
        return NoMountTable;
    for (const auto& mountPoint : mountPoints) {
        if (TWPath::isAtOrBelow(mountPoint, path))
            return mountPoint == path ? MountPoint : MountInside;
    }
    return nullptr;
}

#include "deletion/TWDeletionRules.h"

#include "support/TWPath.h"

#include <algorithm>
#include <deque>
#include <filesystem>

namespace {

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
constexpr const char* SystemFolders[]
    = { "/dev", "/dev/shm", "/etc", "/home", "/lost+found", "/media", "/mnt", "/opt", "/root", "/run", "/run/lock",
          "/run/media", "/run/user", "/snap", "/srv", "/tmp", "/var", "/var/backups", "/var/cache", "/var/lib",
          "/var/local", "/var/lock", "/var/log", "/var/mail", "/var/opt", "/var/run", "/var/spool", "/var/tmp" };

// These belong to the system through and through, except for /usr/local.
constexpr const char* SystemTrees[]
    = { "/bin", "/boot", "/lib", "/lib32", "/lib64", "/libx32", "/proc", "/sbin", "/sys", "/usr" };
constexpr auto LocalTree = "/usr/local";

constexpr int MostLinks = 40; // as many as the system follows

std::deque<std::string> componentsOf(const std::string& path)
{
    std::deque<std::string> components;
    for (const auto& component : std::filesystem::path(path).relative_path()) {
        if (!component.empty() && component != ".")
            components.push_back(component.string());
    }
    return components;
}

std::string join(const std::string& folder, std::string_view name)
{
    std::string path = folder;
    if (path != "/")
        path += '/';
    return path.append(name);
}

}

TWDeletionRules::TWDeletionRules(const TWPlaces& places, const TWFileSystem& fileSystem, const std::string& dataFolder,
    std::shared_ptr<const TWMountPoints> mountPoints)
    : mountPoints_(std::move(mountPoints))
    , sandboxed_(places.sandboxed())
{
    // The first protection of a folder is the one that counts.
    protect(fileSystem, "/", { Root, nullptr, false }, nullptr);
    if (sandboxed_) {
        protect(fileSystem, places.sandboxRoot, { SandboxItself, nullptr, true }, OutsideSandbox);
        protect(fileSystem, places.realHome, { Home, OutsideSandbox, false }, AboveHome);
    }
    protectSystem(fileSystem);
    protectUser(places, fileSystem, dataFolder);
}

void TWDeletionRules::protectSystem(const TWFileSystem& fileSystem)
{
    protect(fileSystem, LocalTree, { SystemFolder, nullptr, true }, nullptr);
    for (const auto* folder : SystemFolders)
        protect(fileSystem, folder, { SystemFolder, nullptr, false }, nullptr);
    for (const auto* tree : SystemTrees)
        protect(fileSystem, tree, { SystemFolder, InsideSystem, false }, nullptr);
}

void TWDeletionRules::protectUser(const TWPlaces& places, const TWFileSystem& fileSystem, const std::string& dataFolder)
{
    protect(fileSystem, places.home, { Home, nullptr, false }, AboveHome);
    for (const auto& folder : { dataFolder, places.settingsFolder() })
        protect(fileSystem, folder, { DataFolder, InsideDataFolder, false }, AboveDataFolder);
}

// Goes the way to the path one component at a time, so that every link that leads there is protected like the folder
// itself.
void TWDeletionRules::protect(
    const TWFileSystem& fileSystem, const std::string& path, const Protection& protection, TWObjection above)
{
    std::string reached = "/";
    auto components = componentsOf(path);
    for (int links = 0; !components.empty();) {
        protectSeen(fileSystem.look(reached), reached, { above, nullptr, false });
        const auto name = components.front();
        components.pop_front();
        if (name == "..") {
            reached = TWPath::parent(reached);
            continue;
        }
        const auto next = join(reached, name);
        const auto look = fileSystem.look(next);
        if (!look.isThere() || look.facts.kind != TWFileKind::Link) {
            reached = next;
            continue;
        }
        protectSeen(look, next, { protection.itself, nullptr, false });
        std::error_code error;
        const auto target = std::filesystem::read_symlink(next, error).string();
        if (error || ++links > MostLinks)
            return;
        if (target.starts_with('/'))
            reached = "/";
        auto targets = componentsOf(target);
        components.insert(components.begin(), targets.begin(), targets.end());
    }
    protectSeen(fileSystem.look(reached), reached, protection);
}

void TWDeletionRules::protectSeen(const TWFileLook& look, const std::string& path, const Protection& protection)
{
    if (!protection.itself && !protection.permitsBelow)
        return;
    if (look.isThere())
        protections_.try_emplace(look.facts.identity, protection);
    else if (look.presence == TWPresence::Unknown)
        unseen_.try_emplace(path, protection);
}

TWDeletionRules::Folder TWDeletionRules::judgeFolder(const TWHeldFolder& folder, std::string realPath) const
{
    Folder judged{ std::move(realPath), nullptr, true };
    judged.hasMounts = hasMountsBelow(judged.realPath);
    const auto chain = folder.chain();
    if (chain.empty()) {
        judged.objection = CannotTell;
        return judged;
    }
    for (const auto& identity : chain) {
        const auto found = protections_.find(identity);
        if (found == protections_.end())
            continue;
        if (found->second.permitsBelow)
            return judged;
        if ((judged.objection = found->second.below))
            return judged;
    }
    // The root of the sandbox, which permits what lies below, was not met.
    if (sandboxed_)
        judged.objection = OutsideSandbox;
    for (const auto& [path, protection] : unseen_) {
        if (protection.below && TWPath::isAtOrBelow(judged.realPath, path))
            judged.objection = protection.below;
    }
    return judged;
}

TWObjection TWDeletionRules::objection(const Folder& folder, std::string_view name, const TWFileLook& look) const
{
    if (look.presence == TWPresence::Unknown)
        return CannotTell;
    if (mountPoints_->empty())
        return NoMountTable;
    if (look.isThere()) {
        if (const auto found = protections_.find(look.facts.identity); found != protections_.end())
            return found->second.itself;
    }
    if (folder.objection)
        return folder.objection;
    if (!folder.hasMounts && unseen_.empty())
        return nullptr;
    const auto realPath = join(folder.realPath, name);
    if (const auto found = unseen_.find(realPath); found != unseen_.end())
        return found->second.itself;
    return objectionToMounts(realPath);
}

bool TWDeletionRules::hasMountsBelow(const std::string& realPath) const
{
    const auto inside = realPath == "/" ? realPath : realPath + "/";
    const auto next = std::lower_bound(mountPoints_->begin(), mountPoints_->end(), inside);
    return next != mountPoints_->end() && next->starts_with(inside);
}

TWObjection TWDeletionRules::objectionToMounts(const std::string& realPath) const
{
    if (std::binary_search(mountPoints_->begin(), mountPoints_->end(), realPath))
        return MountPoint;
    return hasMountsBelow(realPath) ? MountInside : nullptr;
}

TWObjection TWDeletionRules::objectionToPath(const std::string& path)
{
    if (path.empty())
        return Empty;
    if (path.front() != '/')
        return Relative;
    // The deletion tool would get only what stands before it.
    if (path.find('\0') != std::string::npos)
        return NotAPath;
    return TWPath::withoutTrailingSlashes(path) == "/" ? Root : CannotTell;
}

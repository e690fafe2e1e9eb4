#include "deletion/TWDeletionRules.h"

#include "deletion/TWPathSteps.h"
#include "platform/TWSystemTrees.h"
#include "support/TWPath.h"

#include <algorithm>

namespace {

constexpr auto Empty = "the path is empty.";
constexpr auto Relative = "the path does not begin with \"/\" or \"~\".";
constexpr auto NotAPath = "no path can hold a byte of 0.";
constexpr auto CannotTell = "the folders on the way to it could not be looked at.";
constexpr auto OutsideSandbox = "it lies outside the sandbox.";
constexpr auto MountedInSandbox = "it lies on a volume that is mounted inside the sandbox.";
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

}

TWDeletionRules::TWDeletionRules(const TWPlaces& places, const TWFileSystem& fileSystem, const std::string& dataFolder,
    std::shared_ptr<const TWMountPoints> mountPoints, const TWKeepList& keepList)
    : fileSystem_(fileSystem)
    , places_(places)
    , keepList_(keepList)
    , mountPoints_(std::move(mountPoints))
    , sandboxed_(places.sandboxed())
{
    // If a folder has several protections, the first one gives the reason why it may not be deleted itself.
    protect(fileSystem, "/", { Root, nullptr, false }, nullptr);
    if (sandboxed_) {
        sandbox_ = fileSystem.look(places.sandboxRoot, TWLinkAtEnd::Follow).facts.identity;
        protect(fileSystem, places.sandboxRoot, { SandboxItself, nullptr, false }, OutsideSandbox);
        for (const auto& home : places.realHomes)
            protect(fileSystem, home, { Home, OutsideSandbox, false }, AboveHome);
    }
    protectSystem(fileSystem);
    protectUser(places, fileSystem, dataFolder);
}

void TWDeletionRules::protectSystem(const TWFileSystem& fileSystem)
{
    protect(fileSystem, TWLocalTree, { SystemFolder, nullptr, true }, nullptr);
    for (const auto* folder : SystemFolders)
        protect(fileSystem, folder, { SystemFolder, nullptr, false }, nullptr);
    for (const auto* tree : TWSystemTrees)
        protect(fileSystem, tree, { SystemFolder, InsideSystem, false }, nullptr);
}

void TWDeletionRules::protectUser(const TWPlaces& places, const TWFileSystem& fileSystem, const std::string& dataFolder)
{
    protect(fileSystem, places.home, { Home, nullptr, false }, AboveHome);
    for (const auto& home : places.realHomes)
        protect(fileSystem, home, { Home, nullptr, false }, AboveHome);
    auto ownFolders = places.realOwnFolders;
    ownFolders.insert(ownFolders.end(), { dataFolder, places.settingsFolder() });
    for (const auto& folder : ownFolders)
        protect(fileSystem, folder, { DataFolder, InsideDataFolder, false }, AboveDataFolder);
}

// Every link that leads there is protected like the folder itself.
void TWDeletionRules::protect(
    const TWFileSystem& fileSystem, const std::string& path, const Protection& protection, Reason above)
{
    const auto look = [&](const std::string& reached) { return fileSystem.look(reached); };
    for (const auto& step : TWPathSteps(fileSystem, path, look)) {
        if (step.isLink())
            protectSeen(step.look, step.path, { protection.itself, nullptr, false });
        else if (step.last)
            protectSeen(step.look, step.path, protection);
        else
            protectSeen(step.look, step.path, { above, nullptr, false });
    }
}

void TWDeletionRules::protectSeen(const TWFileLook& look, const std::string& path, const Protection& protection)
{
    if (!protection.itself && !protection.permitsBelow)
        return;
    if (look.presence == TWPresence::Gone)
        return;
    auto& known = look.isThere() ? protections_.try_emplace(look.facts.identity, protection).first->second
                                 : unseen_.try_emplace(path, protection).first->second;
    if (!known.below)
        known.below = protection.below;
}

const TWKeepRules& TWDeletionRules::keepRules() const
{
    std::call_once(prepared_, [this] {
        keepRules_ = std::make_unique<const TWKeepRules>(places_, fileSystem_, keepList_);
        isPrepared_ = true;
    });
    return *keepRules_;
}

TWDeletionRules::Folder TWDeletionRules::judgeFolder(const TWHeldFolder& folder, std::string realPath) const
{
    Folder judged{ std::move(realPath), nullptr, true, {} };
    judged.hasMounts = hasMountsBelow(judged.realPath);
    const auto chain = folder.chain();
    if (chain.empty()) {
        judged.objection = CannotTell;
        return judged;
    }
    judged.kept = keepRules().judgeFolder(chain, judged.realPath);
    judged.objection = objectionToChain(chain);
    for (const auto& [path, protection] : unseen_) {
        if (!judged.objection && protection.below && TWPath::isAtOrBelow(judged.realPath, path))
            judged.objection = protection.below;
    }
    return judged;
}

// Goes on above the root of the sandbox: a sandbox in a folder of the system or of Tidewell's settings permits nothing.
TWDeletionRules::Reason TWDeletionRules::objectionToChain(const std::vector<TWAncestor>& chain) const
{
    bool inSandbox = !sandboxed_;
    bool crossedMount = false;
    for (const auto& ancestor : chain) {
        if (sandboxed_ && ancestor.identity == sandbox_)
            inSandbox = true;
        if (const auto found = protections_.find(ancestor.identity); found != protections_.end()) {
            if (found->second.permitsBelow)
                break;
            const auto* below = found->second.below;
            if (below && !(inSandbox && below == OutsideSandbox))
                return below;
        }
        // What is mounted in the sandbox may really be elsewhere: a bind mount does not show the folders above its
        // source.
        if (!inSandbox && ancestor.isMountRoot)
            crossedMount = true;
    }
    if (!inSandbox)
        return OutsideSandbox;
    return crossedMount ? MountedInSandbox : nullptr;
}

TWObjection TWDeletionRules::objection(const Folder& folder, std::string_view name, const TWFileLook& look) const
{
    if (const auto* reason = fixedObjection(folder, name, look))
        return reason;
    return keepRules().objection(folder.kept, name, look);
}

bool TWDeletionRules::mustLookInside(const Folder& folder, const TWFileLook& look, Search search) const
{
    return keepRules().mustLookInside(folder.kept, look, search);
}

TWObjection TWDeletionRules::objectionInside(const Folder& folder, std::string_view name, const TWFileLook& look,
    Search search, const TWCancellation& cancellation) const
{
    return keepRules().objectionInside(TWPath::join(folder.realPath, name), look, search, cancellation);
}

TWDeletionRules::Reason TWDeletionRules::fixedObjection(
    const Folder& folder, std::string_view name, const TWFileLook& look) const
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
    const auto realPath = TWPath::join(folder.realPath, name);
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

TWDeletionRules::Reason TWDeletionRules::objectionToMounts(const std::string& realPath) const
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

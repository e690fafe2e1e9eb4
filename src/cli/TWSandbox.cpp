#include "cli/TWSandbox.h"

#include "cli/TWCommandTable.h"
#include "cli/TWPathArgument.h"
#include "platform/TWSystemTrees.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <cerrno>

namespace {

constexpr auto NotUTF8
    = "The folder \"%@\" cannot be used, since its name is not valid UTF-8. Please choose another one.\n";
constexpr auto HoldsHome = "The folder \"%@\" cannot be a sandbox: it is your home folder or holds it. Please choose "
                           "another one, for example a new folder.\n";
constexpr auto HoldsSettings
    = "The folder \"%@\" cannot be a sandbox: it holds your own settings or lists of Tidewell, "
      "or is inside their folder. Please choose another one, for example a new folder.\n";
constexpr auto InSystem = "The folder \"%@\" cannot be a sandbox: it belongs to the system. Please choose another one, "
                          "for example a new folder.\n";
constexpr auto NoSandbox = "The sandbox folder \"%@\" could not be made (%@). Please choose another one.\n";
constexpr auto OthersCanChange = "The folder \"%@\" cannot be a sandbox: other users can change it or a folder that it "
                                 "is in. Please choose another one, which only you and root can change.\n";
constexpr auto NoDemoFolder
    = "No folder for the demonstration could be made (%@). Please name one: \"tidewell demo DIR\".\n";
constexpr auto DemoNotEmpty
    = "The folder \"%@\" is not empty. Please name a new or an empty one for the demonstration.\n";
constexpr auto SandboxLeaks = "The sandbox folder \"%@\" holds a link that leads out of it: \"%@\". Please remove the "
                              "link or choose another folder.\n";

// The real path of the innermost folder on the way to the path that exists, and what follows it.
std::pair<std::string, std::string> existingPart(const TWFileSystem& fileSystem, const std::string& path)
{
    std::string existing = path;
    auto real = fileSystem.realPath(existing, TWLinkAtEnd::Follow);
    for (; !real && existing != "/"; real = fileSystem.realPath(existing, TWLinkAtEnd::Follow))
        existing = TWPath::parent(existing);
    return { real.value_or("/"), path.substr(existing == "/" ? 0 : existing.size()) };
}

// True if inner leads to outer or to something below it, whatever links and bind mounts are on the way. Neither needs
// to exist.
bool isAtOrBelow(const TWFileSystem& fileSystem, const std::string& inner, const std::string& outer)
{
    if (TWPath::isAtOrBelow(inner, outer))
        return true;
    const auto real = existingPart(fileSystem, inner).first;
    const auto realOuter = fileSystem.realPath(outer, TWLinkAtEnd::Follow);
    if (realOuter && TWPath::isAtOrBelow(real, *realOuter))
        return true;
    int error = 0;
    const auto held = fileSystem.holdFolder(real, error);
    const auto chain = held ? held->chain() : std::vector<TWAncestor>();
    const auto look = fileSystem.look(outer, TWLinkAtEnd::Follow);
    return look.isThere() && std::any_of(chain.begin(), chain.end(), [&](const TWAncestor& ancestor) {
        return ancestor.identity == look.facts.identity;
    });
}

// True if another user can lead this one from the folder elsewhere. What does not exist yet will be this user's own.
bool canOthersRedirect(const TWHost& host, const std::string& folder)
{
    const auto [real, missing] = existingPart(host.fileSystem(), folder);
    return host.ownFiles().canOthersRedirect(TWPath::withoutTrailingSlashes(real == "/" ? missing : real + missing));
}

// Why the folder cannot be a sandbox, or nullptr.
const char* objectionToSandbox(const TWFileSystem& fileSystem, const std::string& folder, const TWPlaces& real)
{
    const auto holds = [&](const std::string& path) { return isAtOrBelow(fileSystem, path, folder); };
    const auto isIn = [&](const std::string& path) { return isAtOrBelow(fileSystem, folder, path); };
    if (std::any_of(real.realHomes.begin(), real.realHomes.end(), holds))
        return HoldsHome;
    for (const auto& own : real.realOwnFolders) {
        if (holds(own) || isIn(own))
            return HoldsSettings;
    }
    if (std::any_of(std::begin(TWSystemTrees), std::end(TWSystemTrees), isIn) && !isIn(TWLocalTree))
        return InSystem;
    return nullptr;
}

// True if the path is an empty folder or one that can be created.
bool isNewOrEmpty(const TWFileSystem& fileSystem, const std::string& path)
{
    int error = 0;
    const auto real = fileSystem.realPath(path, TWLinkAtEnd::Follow);
    const auto open = real ? fileSystem.openFolder(*real, error) : nullptr;
    return open ? open->entries().empty() : !fileSystem.look(path).isThere();
}

std::optional<TWPlaces> sandboxAt(const std::string& wanted, const TWHost& host, TWCommandResult& problem)
{
    const auto real = host.places();
    const auto meant = TWReadPathArgument(host.fileSystem(), real, wanted);
    const auto shown = TWText::oneLine(meant.path);
    if (!meant.problem.empty())
        problem = TWWrongUse(meant.problem);
    else if (!TWText::isValidUTF8(meant.path))
        problem = TWWrongUse(TWText::fill(NotUTF8, { shown }));
    for (const auto& folder : { meant.path, meant.path + "/home" }) {
        const auto* objection = objectionToSandbox(host.fileSystem(), folder, real);
        if (objection && problem.status == TWStatus::Success)
            problem = TWWrongUse(TWText::fill(objection, { shown }));
    }
    if (problem.status != TWStatus::Success)
        return std::nullopt;
    if (canOthersRedirect(host, meant.path)) {
        problem = TWWrongUse(TWText::fill(OthersCanChange, { shown }));
        return std::nullopt;
    }
    int error = host.ownFiles().makeFolders(meant.path + "/home");
    const auto root = error == 0 ? host.fileSystem().realPath(meant.path, TWLinkAtEnd::Follow, &error) : std::nullopt;
    if (root)
        return host.sandboxPlaces(*root);
    problem = { TWStatus::Failure, "", TWText::fill(NoSandbox, { shown, TWErrorText(error) }) };
    return std::nullopt;
}

std::optional<TWPlaces> newSandboxAt(const std::string& wanted, const TWHost& host, TWCommandResult& problem)
{
    if (wanted.empty()) {
        int error = 0;
        if (const auto folder = host.makeTemporaryFolder(error))
            return sandboxAt(*folder, host, problem);
        problem = { TWStatus::Failure, "", TWText::fill(NoDemoFolder, { TWErrorText(error) }) };
        return std::nullopt;
    }
    const auto meant = TWReadPathArgument(host.fileSystem(), host.places(), wanted);
    if (meant.problem.empty() && isNewOrEmpty(host.fileSystem(), meant.path))
        return sandboxAt(wanted, host, problem);
    problem = TWWrongUse(
        meant.problem.empty() ? TWText::fill(DemoNotEmpty, { TWText::oneLine(meant.path) }) : meant.problem);
    return std::nullopt;
}

// Returns the first symbolic link on the way from the sandbox's root to the path, including the path itself, that leads
// out of the sandbox or cannot be resolved; "" if there is none.
std::string linkOut(const TWFileSystem& fileSystem, const std::string& root, std::string path)
{
    for (; path.size() > root.size(); path = TWPath::parent(path)) {
        const auto look = fileSystem.look(path);
        if (!look.isThere() || look.facts.kind != TWFileKind::Link)
            continue;
        const auto target = fileSystem.realPath(path, TWLinkAtEnd::Follow);
        if (!target || !TWPath::isAtOrBelow(*target, root))
            return path;
    }
    return "";
}

// The same for the folder and all its entries, so that any file opened in it is inside the sandbox.
std::string linkOutOfFolder(const TWFileSystem& fileSystem, const std::string& root, const std::string& folder)
{
    if (auto link = linkOut(fileSystem, root, folder); !link.empty())
        return link;
    int error = 0;
    const auto real = fileSystem.realPath(folder, TWLinkAtEnd::Follow);
    const auto open = real ? fileSystem.openFolder(*real, error) : nullptr;
    if (!open)
        return "";
    for (const auto& entry : open->entries()) {
        if (auto link = linkOut(fileSystem, root, *real + "/" + std::string(entry.name)); !link.empty())
            return link;
    }
    return "";
}

}

std::optional<TWPlaces> TWPlacesFor(const TWInvocation& invocation, const TWHost& host, TWCommandResult& problem)
{
    if (invocation.row->kind == TWCommandKind::CleansNewSandbox)
        return newSandboxAt(invocation.text(invocation.row->arguments.front().name), host, problem);
    return invocation.sandbox ? sandboxAt(*invocation.sandbox, host, problem) : host.places();
}

std::string TWProblemOfPlaces(const TWHost& host, const TWPlaces& places, const std::string& dataFolder)
{
    const auto& fileSystem = host.fileSystem();
    // Text in the settings file must be UTF-8.
    if (!TWText::isValidUTF8(places.settingsFile()))
        return TWText::fill(NotUTF8, { TWText::oneLine(places.configHome) });
    if (!places.sandboxed())
        return "";
    for (const auto& folder : { places.home, places.settingsFolder(), dataFolder, places.runtimeFolder }) {
        const auto& root = places.sandboxRoot;
        const auto link
            = folder == places.home ? linkOut(fileSystem, root, folder) : linkOutOfFolder(fileSystem, root, folder);
        if (!link.empty())
            return TWText::fill(SandboxLeaks, { TWText::oneLine(root), TWText::oneLine(link) });
        if (canOthersRedirect(host, folder))
            return TWText::fill(OthersCanChange, { TWText::oneLine(folder) });
    }
    return "";
}

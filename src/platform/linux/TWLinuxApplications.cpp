#include "platform/linux/TWLinuxApplications.h"

#include "platform/linux/TWLinuxPreferencePaths.h"
#include "platform/linux/TWLinuxProcesses.h"
#include "platform/linux/TWLinuxProgram.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <set>

namespace {

constexpr auto CannotRead = "\"%@\" could not be read: %@.";
constexpr auto NotAnEntry = "\"%@\" does not describe an application.";
constexpr auto NotAProgram = "\"%@\" is neither a program nor a file that describes an application.";

constexpr std::string_view Ending = ".desktop";
constexpr std::size_t LongestFile = std::size_t{ 256 } << 10; // in bytes; translated ones have up to 100 kB
constexpr std::size_t MostBytes = std::size_t{ 32 } << 20; // in all files together
constexpr std::size_t MostFiles = 20000;
constexpr std::size_t MostFolders = 2000;
constexpr int DeepestFolder = 8;

std::vector<std::string> listValue(const char* variable, const char* fallback)
{
    const char* value = std::getenv(variable);
    auto parts = TWText::split(value && *value ? value : fallback, ':');
    std::erase(parts, "");
    return parts;
}

// Relative folders are ignored.
std::vector<std::string> folders(const char* variable, const char* fallback)
{
    std::vector<std::string> folders;
    for (const auto& part : listValue(variable, fallback)) {
        if (part.starts_with('/'))
            folders.push_back(TWPath::standardize(part, ""));
    }
    return folders;
}

bool isInRealHome(const std::string& folder, const TWPlaces& places)
{
    return !TWPath::isAtOrBelow(folder, places.sandboxRoot)
        && std::any_of(places.realHomes.begin(), places.realHomes.end(),
            [&](const std::string& home) { return home != "/" && TWPath::isAtOrBelow(folder, home); });
}

std::vector<std::string> applicationFolders(const std::string& dataHome, const std::vector<std::string>& dataFolders)
{
    std::vector<std::string> folders{ dataHome + "/applications" };
    for (const auto& folder : dataFolders)
        folders.push_back(TWPath::join(folder, "applications"));
    return folders;
}

std::string firstNotEmpty(std::initializer_list<std::string> texts)
{
    return *std::find_if(texts.begin(), texts.end() - 1, [](const std::string& text) { return !text.empty(); });
}

TWApplication application(const TWDesktopEntry& file, const std::string& identifier, const std::string& path)
{
    const auto program = TWLinuxProgram::startedBy(file.command);
    const std::string executable(TWLinuxProgram::stem(TWPath::lastComponent(program)));
    const auto shown = firstNotEmpty({ file.displayName, file.name, executable, identifier });
    return { identifier, file.name, executable, TWText::oneLine(shown), file.icon, path, file.flatpak };
}

std::string sortKey(const std::string& text)
{
    const std::unique_ptr<char, void (*)(gpointer)> folded(g_utf8_casefold(text.c_str(), -1), g_free);
    const std::unique_ptr<char, void (*)(gpointer)> key(g_utf8_collate_key(folded.get(), -1), g_free);
    return key.get();
}

}

TWLinuxApplications::Session TWLinuxApplications::Session::current(const TWPlaces& places)
{
    auto dataFolders = folders("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    if (places.sandboxed()) {
        std::erase_if(dataFolders, [&](const std::string& folder) { return isInRealHome(folder, places); });
    }
    return { dataFolders, folders("PATH", "/usr/local/bin:/usr/bin:/bin"), listValue("XDG_CURRENT_DESKTOP", "") };
}

TWLinuxApplications::TWLinuxApplications(
    const TWPlaces& places, const TWFileSystem& fileSystem, const TWOwnFiles& files, Session session)
    : places_(places)
    , fileSystem_(fileSystem)
    , files_(files)
    , session_(std::move(session))
    , folders_(applicationFolders(places.dataHome, session_.dataFolders))
{
}

// The identifier of "kde/foo.desktop" is "kde-foo". Folders are recognised so that links cannot lead in circles.
void TWLinuxApplications::addFiles(const std::string& folder, const std::string& prefix, int depth,
    std::unordered_set<TWFileIdentity>& visited, Files& found) const
{
    int error = 0;
    const auto realPath = fileSystem_.realPath(folder, TWLinkAtEnd::Follow);
    const auto opened = realPath ? fileSystem_.openFolder(*realPath, error) : nullptr;
    if (!opened || visited.size() >= MostFolders || !visited.insert(opened->identity()).second)
        return;
    for (const auto& entry : opened->entries()) {
        const std::string name(entry.name);
        const bool isLink = entry.kind == TWFileKind::Link;
        const bool isFile = entry.kind == TWFileKind::File || isLink;
        if (isFile && name.size() > Ending.size() && name.ends_with(Ending) && found.size() < MostFiles)
            found.try_emplace(prefix + name.substr(0, name.size() - Ending.size()), TWPath::join(folder, name));
        else if ((isLink || entry.kind == TWFileKind::Folder) && depth < DeepestFolder)
            addFiles(TWPath::join(folder, name), prefix + name + "-", depth + 1, visited, found);
    }
}

std::vector<TWLinuxApplications::Entry> TWLinuxApplications::entries() const
{
    Files found;
    std::unordered_set<TWFileIdentity> visited;
    for (const auto& folder : folders_)
        addFiles(folder, "", 0, visited, found);
    std::vector<Entry> entries;
    std::size_t bytesLeft = MostBytes;
    for (const auto& [identifier, path] : found) {
        const auto contents = files_.read(path, std::min(bytesLeft, LongestFile));
        bytesLeft -= contents.bytes.size();
        if (auto file = TWDesktopEntry::parse(contents.bytes); file && !file->isHidden)
            entries.push_back({ application(*file, identifier, path), std::move(*file) });
    }
    return entries;
}

std::string TWLinuxApplications::programPath(const std::string& program) const
{
    const auto canRun = [](const std::string& path) { return access(path.c_str(), X_OK) == 0; };
    if (program.find('/') != std::string::npos)
        return canRun(program) ? program : "";
    for (const auto& folder : session_.programFolders) {
        if (auto path = TWPath::join(folder, program); !program.empty() && canRun(path))
            return path;
    }
    return "";
}

// As desktops do, leaves out what the user could not start.
bool TWLinuxApplications::isShown(const TWDesktopEntry& file) const
{
    const bool canStart = file.command.empty() ? file.isStartedOverBus : !programPath(file.command.front()).empty();
    return canStart && (file.tryExec.empty() || !programPath(file.tryExec).empty())
        && file.isShownBy(session_.desktops);
}

std::vector<TWApplication> TWLinuxApplications::installed() const
{
    std::vector<std::pair<std::string, TWApplication>> sorted;
    for (auto& entry : entries()) {
        if (isShown(entry.file))
            sorted.emplace_back(sortKey(entry.application.displayName), std::move(entry.application));
    }
    std::stable_sort(
        sorted.begin(), sorted.end(), [](const auto& one, const auto& other) { return one.first < other.first; });
    std::vector<TWApplication> applications;
    applications.reserve(sorted.size());
    for (auto& each : sorted)
        applications.push_back(std::move(each.second));
    return applications;
}

bool TWLinuxApplications::isInstalled(const std::string& path) const
{
    return std::any_of(
        folders_.begin(), folders_.end(), [&](const std::string& folder) { return TWPath::isAtOrBelow(path, folder); });
}

std::string TWLinuxApplications::identifier(const std::string& path) const
{
    std::string name(TWPath::lastComponent(path));
    for (const auto& folder : folders_) {
        if (TWPath::isAtOrBelow(path, folder) && path.size() > folder.size()) {
            name = path.substr(folder.size() + 1);
            break;
        }
    }
    std::replace(name.begin(), name.end(), '/', '-');
    return name.ends_with(Ending) ? name.substr(0, name.size() - Ending.size()) : name;
}

std::optional<TWApplication> TWLinuxApplications::open(const std::string& path, std::string& problem) const
{
    const auto given = TWPath::systemPath(path);
    if (!given.ends_with(Ending))
        return openProgram(given, problem);
    auto opened = entry(given, problem);
    return opened ? std::optional(std::move(opened->application)) : std::nullopt;
}

std::optional<TWLinuxApplications::Entry> TWLinuxApplications::entry(
    const std::string& given, std::string& problem) const
{
    const auto contents = files_.read(given, LongestFile);
    const bool isUnsuitable = contents.error == EISDIR || contents.error == EINVAL || contents.error == EFBIG;
    if (auto file = TWDesktopEntry::parse(contents.bytes))
        return Entry{ application(*file, identifier(given), given), std::move(*file) };
    problem = contents.error == 0 || isUnsuitable
        ? TWText::fill(NotAnEntry, { TWText::oneLine(given) })
        : TWText::fill(CannotRead, { TWText::oneLine(given), TWErrorText(contents.error) });
    return std::nullopt;
}

std::optional<TWApplication> TWLinuxApplications::openProgram(const std::string& path, std::string& problem) const
{
    const auto look = fileSystem_.look(path, TWLinkAtEnd::Follow);
    const bool isFile = look.isThere() && look.facts.kind == TWFileKind::File;
    if (isFile && access(path.c_str(), X_OK) == 0) {
        const std::string name(TWPath::lastComponent(path));
        return TWApplication{ name, "", name, TWText::oneLine(name), "", path, "" };
    }
    problem = look.isThere() ? TWText::fill(NotAProgram, { TWText::oneLine(path) })
                             : TWText::fill(CannotRead, { TWText::oneLine(path), TWErrorText(look.error) });
    return std::nullopt;
}

std::string TWLinuxApplications::sharedFileList(const TWApplication& application) const
{
    return TWLinuxSharedFileList(application, places_);
}

std::vector<std::string> TWLinuxApplications::preferenceFiles(const TWApplication& application) const
{
    return TWLinuxPreferencePaths(application, places_);
}

std::string TWLinuxApplications::realProgram(const TWDesktopEntry& file) const
{
    const auto started = TWLinuxProgram::startedBy(file.command);
    const bool isRelative = !started.starts_with('/') && started.find('/') != std::string::npos;
    const auto program = isRelative ? "" : programPath(started);
    auto real = fileSystem_.realPath(program, TWLinkAtEnd::Follow).value_or("");
    return TWLinuxProgram::isLauncher(TWPath::lastComponent(real)) ? "" : real;
}

bool TWLinuxApplications::isRunning(const Entry& entry, const TWRunningApplications& running) const
{
    if (running.runsProgram(entry.application.executable))
        return true;
    return running.runsProgram(TWPath::lastComponent(realProgram(entry.file)));
}

TWRunningApplications TWLinuxApplications::running() const
{
    TWRunningApplications running;
    std::set<std::string> identifiers;
    for (const auto& process : TWLinuxOwnProcesses()) {
        if (places_.sandboxed() && !TWPath::isAtOrBelow(process.executable, places_.sandboxRoot))
            continue;
        for (const auto& name : process.programNames())
            running.addProgram(name);
        identifiers.insert({ process.unit.application, identifier(process.origin.desktopFile) });
    }
    for (const auto& entry : entries()) {
        if (identifiers.contains(entry.application.identifier) || isRunning(entry, running))
            running.addName(entry.application.name);
    }
    return running;
}

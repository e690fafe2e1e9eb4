#include "platform/linux/TWLinuxListedApplications.h"

#include "platform/linux/TWLinuxProgram.h"
#include "support/TWPath.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>

namespace {

// Of folders that hold programs of many applications.
constexpr std::string_view SharedFolders[] = { "bin", "sbin", "games" };

// Where packages keep the folders of single applications, below the parent of a folder of programs.
constexpr std::string_view PrivateFolders[] = { "lib/", "lib32/", "lib64/", "libexec/", "share/" };

constexpr std::size_t AppImageMark = 8; // where it is in the file
constexpr std::size_t LongestScript = 65536; // in bytes; scripts that only start a program are shorter

std::string ownExecutable()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

std::string beginning(const std::string& path)
{
    std::string bytes(LongestScript, '\0');
    std::ifstream file(path, std::ios::binary);
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(file.gcount()));
    return bytes;
}

bool isOfFileName(char each)
{
    return std::isalnum(static_cast<unsigned char>(each))
        || std::string_view("._-+").find(each) != std::string_view::npos;
}

// Whether the script has "/NAME" somewhere, as in "exec \"$HERE/chrome\"".
bool starts(std::string_view text, std::string_view name)
{
    const auto path = '/' + std::string(name);
    for (auto found = text.find(path); found != text.npos; found = text.find(path, found + 1)) {
        const auto end = found + path.size();
        if (end == text.size() || !isOfFileName(text[end]))
            return true;
    }
    return false;
}

bool isOption(const std::string& word)
{
    return word.starts_with('-');
}

}

bool TWLinuxIsBehindScript(const std::string& script, std::string_view text, const std::string& executable)
{
    const auto folder = TWPath::parent(script);
    const bool isShared = std::find(std::begin(SharedFolders), std::end(SharedFolders), TWPath::lastComponent(folder))
        != std::end(SharedFolders);
    const auto name = TWLinuxProgram::stem(TWPath::lastComponent(script));
    const bool hasSameName = TWLinuxProgram::stem(TWPath::lastComponent(executable)) == name;
    if (!isShared)
        return TWPath::parent(executable) == folder && (hasSameName || starts(text, TWPath::lastComponent(executable)));
    const auto above = TWPath::parent(folder);
    if (!hasSameName || !TWPath::isAtOrBelow(executable, above))
        return false;
    const auto below = std::string_view(executable).substr(std::min(executable.size(), above.size() + 1));
    return below == name
        || std::any_of(std::begin(PrivateFolders), std::end(PrivateFolders),
            [&](std::string_view place) { return below.starts_with(place); });
}

// Systemd becomes the parent of a process that has lost its own, so as a child of systemd only the process that it has
// started itself is the first one. Many desktops name the unit after the process.
bool TWLinuxIsFirstOfUnit(const TWLinuxKnownProcess& process, const TWLinuxKnownProcess* parent)
{
    return process.unit.instance == std::to_string(process.process) || process.origin.isStartedByManager
        || (parent && !parent->unit.isOfManager() && parent->unit.name != process.unit.name);
}

TWLinuxListedApplications::TWLinuxListedApplications(const TWLinuxApplications& applications, const TWPlaces& places,
    const TWFileSystem& fileSystem, const std::vector<std::string>& paths)
    : applications_(applications)
    , places_(places)
    , fileSystem_(fileSystem)
    , ourPrograms_{ ownExecutable(), fileSystem.realPath(places.window, TWLinkAtEnd::Follow).value_or("") }
{
    const auto entries = applications_.entries();
    for (const auto& path : paths)
        listed_.push_back(listed(path, entries));
    for (const auto& entry : entries) {
        if (applications_.isShown(entry.file) && !entry.file.runsInTerminal)
            programs_.insert(applications_.realProgram(entry.file));
    }
    programs_.erase("");
}

// The identifier, which has no slash, or the real path of a file that is somewhere else.
std::string TWLinuxListedApplications::desktopFile(const std::string& path) const
{
    return applications_.isInstalled(path) ? applications_.identifier(path)
                                           : fileSystem_.realPath(path, TWLinkAtEnd::Follow).value_or("");
}

TWLinuxListedApplication TWLinuxListedApplications::listed(const std::string& path, const Entries& entries) const
{
    TWLinuxListedApplication listed;
    listed.path = path;
    const auto given = TWPath::systemPath(path);
    std::string problem;
    if (given.ends_with(".desktop")) {
        if (const auto entry = applications_.entry(given, problem))
            describe(listed, *entry, entries);
    } else {
        listed.program = fileSystem_.realPath(given, TWLinkAtEnd::Follow).value_or("");
    }
    const auto look = fileSystem_.look(listed.program, TWLinkAtEnd::Follow);
    if (!look.isThere() || look.facts.kind != TWFileKind::File)
        listed.program.clear();
    const auto bytes = listed.program.empty() ? "" : beginning(listed.program);
    listed.isScript = bytes.starts_with("#!");
    listed.scriptText = listed.isScript ? bytes : "";
    listed.isAppImage = bytes.starts_with("\x7f"
                                          "ELF")
        && bytes.compare(AppImageMark, 2, "AI") == 0;
    if (!listed.program.empty() && !listed.isScript)
        listed.windowName.clear();
    return listed;
}

void TWLinuxListedApplications::describe(
    TWLinuxListedApplication& listed, const TWLinuxApplications::Entry& entry, const Entries& entries) const
{
    const auto& application = entry.application;
    const bool isTaken = std::any_of(entries.begin(), entries.end(),
        [&](const auto& other) { return other.application.identifier == application.identifier; });
    listed.desktopFile = desktopFile(application.path);
    if (applications_.isInstalled(application.path) || !isTaken)
        listed.identifier = application.identifier;
    listed.flatpak = application.flatpak;
    if (!listed.flatpak.empty())
        return;
    const auto program = applications_.realProgram(entry.file);
    if (meansItsProgram(entry, program, entries))
        listed.program = program;
    const auto& name = entry.file.windowClass.empty() ? listed.identifier : entry.file.windowClass;
    if (!TWLinuxProgram::isLauncher(name) && name != "electron")
        listed.windowName = name;
}

// "program %U" does, "program FOLDER" does not. "program --option %U" does if no other application of the menus uses
// the program.
bool TWLinuxListedApplications::meansItsProgram(
    const TWLinuxApplications::Entry& entry, const std::string& program, const Entries& entries) const
{
    const auto arguments = TWLinuxProgram::arguments(entry.file.command);
    if (!arguments || !std::all_of(arguments->begin(), arguments->end(), isOption))
        return false;
    return arguments->empty() || std::none_of(entries.begin(), entries.end(), [&](const auto& other) {
        return other.file.command != entry.file.command && applications_.isShown(other.file)
            && applications_.realProgram(other.file) == program;
    });
}

bool TWLinuxListedApplications::isInReach(const TWLinuxProcessFolder& folder) const
{
    return !places_.sandboxed()
        || (TWPath::isAtOrBelow(folder.executable(), places_.sandboxRoot) && folder.isAmongOurFiles());
}

bool TWLinuxListedApplications::isInReach(const TWLinuxKnownProcess& process, const TWLinuxProcessTable& table) const
{
    return !places_.sandboxed() || isInReach(table.open(process.process));
}

bool TWLinuxListedApplications::isApplication(const TWLinuxKnownProcess& process) const
{
    return !process.origin.desktopFile.empty() || programs_.contains(process.program);
}

bool TWLinuxListedApplications::isSeparate(const TWLinuxKnownProcess& process, const TWLinuxKnownProcess& parent) const
{
    const bool isOfOtherUnit = !process.unit.application.empty() && process.unit.name != parent.unit.name;
    if (isOfOtherUnit || ourPrograms_.contains(process.executable))
        return true;
    if (!process.flatpak.empty()) // whose paths mean other files
        return process.flatpak != parent.flatpak;
    return process.program != parent.program && isApplication(process);
}

TWLinuxEvidence TWLinuxListedApplications::evidence(
    const TWLinuxListedApplication& listed, const TWLinuxKnownProcess& process, const TWLinuxProcessTable& table) const
{
    if (ourPrograms_.contains(process.executable))
        return TWLinuxEvidence::None;
    if (!listed.flatpak.empty() || !process.flatpak.empty())
        return listed.flatpak == process.flatpak ? TWLinuxEvidence::Program : TWLinuxEvidence::None;
    if (const auto found = evidenceOfProgram(listed, process, table); found != TWLinuxEvidence::None)
        return found;
    const bool isOfUnit = !listed.identifier.empty() && process.unit.application == listed.identifier
        && TWLinuxIsFirstOfUnit(process, table.parentOf(process));
    const bool isOfFile = !listed.desktopFile.empty() && !process.origin.desktopFile.empty()
        && desktopFile(process.origin.desktopFile) == listed.desktopFile;
    return isOfUnit || isOfFile ? TWLinuxEvidence::Started : TWLinuxEvidence::None;
}

TWLinuxEvidence TWLinuxListedApplications::evidenceOfProgram(
    const TWLinuxListedApplication& listed, const TWLinuxKnownProcess& process, const TWLinuxProcessTable& table) const
{
    if (listed.program.empty())
        return TWLinuxEvidence::None;
    if (process.executable.empty()) { // then only the process itself says what it is
        const auto program = applications_.programPath(process.program);
        return fileSystem_.realPath(program, TWLinkAtEnd::Follow) == listed.program ? TWLinuxEvidence::Program
                                                                                    : TWLinuxEvidence::None;
    }
    const bool isBehind
        = listed.isScript && TWLinuxIsBehindScript(listed.program, listed.scriptText, process.executable);
    // The AppImage's file itself is run by the process that serves its contents to the others.
    const bool isServer = listed.isAppImage && process.executable == listed.program;
    if (isServer || (process.program != listed.program && !isBehind) || !table.open(process.process).isAmongOurFiles())
        return TWLinuxEvidence::None;
    return listed.isScript && process.isShell && !isBehind ? TWLinuxEvidence::Started : TWLinuxEvidence::Program;
}

bool TWLinuxListedApplications::ownsWindows(const TWLinuxListedApplication& listed, const TWLinuxKnownProcess& process,
    const std::vector<TWLinuxWindow>& windows) const
{
    const auto isNamed = [&](const std::string& name) { return !name.empty() && name == listed.windowName; };
    return process.flatpak.empty() && !isApplication(process) && !ourPrograms_.contains(process.executable)
        && std::all_of(windows.begin(), windows.end(), [&](const TWLinuxWindow& window) {
               return std::any_of(window.names.begin(), window.names.end(), isNamed);
           });
}

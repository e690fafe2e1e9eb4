#include "platform/linux/TWLinuxPreferencePaths.h"

#include "support/TWPath.h"

#include <algorithm>
#include <climits>

namespace {

// The folders in which an application keeps its files.
struct Folders {
    std::string config;
    std::string data;
    std::string state;
};

struct Candidate {
    std::string_view program; // the executable or the identifier begins with it; "" for any application
    const std::string Folders::*folder;
    std::string_view path; // with the letters of letterValue()
};

// The first that exists is taken, so what only one program has comes before what many have.
constexpr Candidate Candidates[] = {
    { "libreoffice", &Folders::config, "libreoffice/4/user/registrymodifications.xcu" },
    { "soffice", &Folders::config, "libreoffice/4/user/registrymodifications.xcu" },
    { "vlc", &Folders::config, "vlc/vlc-qt-interface.conf" },
    { "code", &Folders::config, "Code/User/globalStorage/state.vscdb" },
    { "codium", &Folders::config, "VSCodium/User/globalStorage/state.vscdb" },
    { "sublime_text", &Folders::config, "sublime-text/Local/Session.sublime_session" },
    { "featherpad", &Folders::config, "featherpad/fp.conf" },
    { "focuswriter", &Folders::config, "GottCode/FocusWriter.conf" },
    { "texmaker", &Folders::config, "xm1/texmaker.ini" },
    { "kwrite", &Folders::data, "kwrite/anonymous.katesession" },
    { "", &Folders::config, "%Prc" },
    { "", &Folders::config, "%P/%P.conf" },
    { "", &Folders::config, "%P/%Prc" },
    { "", &Folders::config, "%I.conf" },
    { "", &Folders::config, "%O/%P.conf" },
    { "", &Folders::config, "%O/%L.conf" },
    { "", &Folders::config, "%N/%N.conf" },
    { "", &Folders::config, "%P/%P.ini" },
    { "", &Folders::config, "%P/settings.json" },
    { "", &Folders::config, "%P/preferences.json" },
    { "", &Folders::config, "%P/settings.xml" },
    { "", &Folders::config, "%P/preferences.xml" },
    { "", &Folders::config, "%P/config.ini" },
    { "", &Folders::config, "%P/%P.cfg" },
    { "", &Folders::config, "%P/config" },
    { "", &Folders::config, "%P/%P-qt-interface.conf" },
    { "", &Folders::config, "%P/%Prc.xml" },
    { "", &Folders::config, "%P/ini" },
    { "", &Folders::config, "%P.conf" },
    { "", &Folders::state, "%Pstaterc" },
    { "", &Folders::data, "%P/%P.conf" },
    { "", &Folders::data, "%P/%P.ini" },
    { "", &Folders::data, "%P/%Prc" },
    { "", &Folders::data, "%P/settings.json" },
};

// The part of a dotted identifier after that many others: "kde" of "org.kde.okular" after one.
std::string partOfIdentifier(const std::string& identifier, std::size_t skipped)
{
    std::string_view rest = identifier;
    for (; skipped > 0; --skipped) {
        const auto dot = rest.find('.');
        rest.remove_prefix(dot == std::string_view::npos ? rest.size() : dot + 1);
    }
    return std::string(rest.substr(0, rest.find('.')));
}

std::string letterValue(char letter, const TWApplication& application)
{
    const auto& identifier = application.identifier;
    switch (letter) {
    case 'P': // program
        return application.executable;
    case 'I': // identifier
        return identifier;
    case 'O': // organisation
        return partOfIdentifier(identifier, 1);
    case 'L': // last part of the identifier
        return identifier.substr(identifier.rfind('.') + 1);
    default: // 'N', name
        return application.name;
    }
}

// The names come from a file that anybody may have written, and must not lead out of the folder.
bool isFileName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.size() <= NAME_MAX
        && name.find_first_of(std::string_view("/\0", 2)) == std::string::npos;
}

// Returns "" if the application has no such value.
std::string filled(std::string_view path, const TWApplication& application)
{
    std::string result;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] != '%') {
            result += path[i];
            continue;
        }
        const auto value = letterValue(path[++i], application);
        if (!isFileName(value))
            return "";
        result += value;
    }
    return result;
}

bool concerns(const Candidate& candidate, const TWApplication& application)
{
    return application.executable.starts_with(candidate.program)
        || application.identifier.starts_with(candidate.program);
}

// Nearest first.
std::vector<Folders> foldersOf(const TWApplication& application, const TWPlaces& places)
{
    std::vector<Folders> folders;
    if (isFileName(application.flatpak)) {
        const auto own = places.home + "/.var/app/" + application.flatpak;
        folders.push_back({ own + "/config", own + "/data", own + "/.local/state" });
    }
    folders.push_back({ places.configHome, places.dataHome, places.stateHome });
    return folders;
}

}

std::string TWLinuxSharedFileList(const TWApplication& application, const TWPlaces& places)
{
    const auto name = filled("%I/recently-used.xbel", application);
    return name.empty() ? "" : TWPath::join(foldersOf(application, places).front().data, name);
}

std::vector<std::string> TWLinuxPreferencePaths(const TWApplication& application, const TWPlaces& places)
{
    std::vector<std::string> files;
    for (const auto& folders : foldersOf(application, places)) {
        for (const auto& candidate : Candidates) {
            const auto name = concerns(candidate, application) ? filled(candidate.path, application) : "";
            const auto file = TWPath::join(folders.*candidate.folder, name);
            if (!name.empty() && std::find(files.begin(), files.end(), file) == files.end())
                files.push_back(file);
        }
    }
    return files;
}

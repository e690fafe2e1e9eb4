#include "platform/linux/TWLinuxProcesses.h"

#include "platform/linux/TWLinuxProgram.h"
#include "platform/posix/TWDescriptor.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <memory>

namespace {

constexpr std::size_t LongestCommandLine = 4096; // in bytes, as the other two
constexpr std::size_t LongestControlGroup = 4096;
constexpr std::size_t LongestEnvironment = 32768;
constexpr std::size_t RandomPartLength = 36; // of the name of a control group of a Snap
constexpr std::string_view Deleted = " (deleted)";

std::string firstBytes(int folder, const char* name, std::size_t limit)
{
    const TWDescriptor file(openat(folder, name, O_RDONLY | O_CLOEXEC));
    std::string bytes(file.isOpen() ? limit : 0, '\0');
    std::size_t length = 0;
    ssize_t got = 0;
    while (length < bytes.size() && (got = read(file.get(), &bytes[length], bytes.size() - length)) > 0)
        length += static_cast<std::size_t>(got);
    bytes.resize(length);
    return bytes;
}

// "" for a process of the kernel, for one that has ended and for one that may not be looked at.
std::string executableOf(int folder)
{
    char target[PATH_MAX];
    const auto length = readlinkat(folder, "exe", target, sizeof target);
    std::string path(target, length > 0 ? static_cast<std::size_t>(length) : 0);
    if (path.ends_with(Deleted)) // replaced by an update
        path.resize(path.size() - Deleted.size());
    return path;
}

// GLib's variables are inherited, so only those that name the process itself count.
std::string desktopFileOf(int folder, std::string_view process)
{
    constexpr std::string_view File = "GIO_LAUNCHED_DESKTOP_FILE=";
    constexpr std::string_view Process = "GIO_LAUNCHED_DESKTOP_FILE_PID=";
    std::string path;
    bool isItsOwn = false;
    for (const auto& variable : TWText::split(firstBytes(folder, "environ", LongestEnvironment), '\0')) {
        if (variable.starts_with(File))
            path = variable.substr(File.size());
        if (variable.starts_with(Process))
            isItsOwn = variable.substr(Process.size()) == process;
    }
    return isItsOwn ? path : "";
}

std::string applicationOf(int folder)
{
    for (const auto& line : TWText::split(firstBytes(folder, "cgroup", LongestControlGroup), '\n')) {
        if (auto application = TWLinuxApplicationOfControlGroup(line); !application.empty())
            return application;
    }
    return "";
}

int hexDigit(char digit)
{
    return digit >= '0' && digit <= '9' ? digit - '0' : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10 : -1;
}

// Replaces each "\x2d" by the byte that it stands for.
std::string unescaped(std::string_view text)
{
    std::string result;
    while (!text.empty()) {
        const bool escape
            = text.size() >= 4 && text.starts_with("\\x") && hexDigit(text[2]) >= 0 && hexDigit(text[3]) >= 0;
        result += escape ? static_cast<char>(hexDigit(text[2]) * 16 + hexDigit(text[3])) : text.front();
        text.remove_prefix(escape ? 4 : 1);
    }
    return result;
}

// "snap.NAME.PROGRAM-RANDOM.scope"; the application is called NAME_PROGRAM.
std::string applicationOfSnap(std::string_view unit)
{
    unit.remove_prefix(std::string_view("snap.").size());
    unit.remove_suffix(std::string_view(".scope").size());
    if (unit.size() > RandomPartLength)
        unit.remove_suffix(RandomPartLength + 1);
    std::string name(unit);
    std::replace(name.begin(), name.end(), '.', '_');
    return name;
}

// "app[-LAUNCHER]-IDENTIFIER-RANDOM.scope" or "app[-LAUNCHER]-IDENTIFIER[@RANDOM].service".
std::string applicationOfUnit(std::string_view unit)
{
    const bool isScope = unit.ends_with(".scope");
    if (isScope && unit.starts_with("snap."))
        return applicationOfSnap(unit);
    if (!unit.starts_with("app-") || (!isScope && !unit.ends_with(".service")))
        return "";
    unit = unit.substr(0, unit.rfind('.'));
    unit = unit.substr(0, isScope ? unit.rfind('-') : unit.find('@'));
    unit.remove_prefix(std::min(unit.size(), std::string_view("app-").size()));
    // Dashes of the identifier should be escaped, but not everybody does so.
    const auto dash = unit.find('-');
    return unescaped(dash == std::string_view::npos ? unit : unit.substr(dash + 1));
}

}

std::string TWLinuxApplicationOfControlGroup(std::string_view line)
{
    std::string innermost;
    for (const auto& part : TWText::split(line, '/')) {
        if (auto application = applicationOfUnit(part); !application.empty())
            innermost = std::move(application);
    }
    return innermost;
}

std::vector<std::string> TWLinuxProcess::programNames() const
{
    std::vector<std::string> names;
    const auto add = [&](std::string_view path) {
        const auto name = TWPath::lastComponent(path);
        names.emplace_back(name);
        names.emplace_back(TWLinuxProgram::stem(name));
    };
    add(executable);
    add(words.empty() ? "" : words.front());
    add(TWLinuxProgram::script(TWPath::lastComponent(executable), words));
    return names;
}

std::string TWLinuxProcess::programName() const
{
    const std::string program(TWPath::lastComponent(executable));
    const auto script = TWLinuxProgram::script(program, words);
    return script.empty() ? program : std::string(TWPath::lastComponent(script));
}

TWLinuxProcess TWLinuxProcessFolder::read() const
{
    return { executable, TWText::split(firstBytes(folder, "cmdline", LongestCommandLine), '\0'), applicationOf(folder),
        desktopFileOf(folder, number) };
}

void TWLinuxForEachOwnProcess(const std::function<bool(const TWLinuxProcessFolder&)>& call)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> all(opendir("/proc"), closedir);
    while (const dirent* entry = all ? readdir(all.get()) : nullptr) {
        const std::string_view number = entry->d_name;
        if (number.find_first_not_of("0123456789") != std::string_view::npos || number == std::to_string(getpid()))
            continue;
        const TWDescriptor folder(openat(dirfd(all.get()), entry->d_name, O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct stat facts;
        if (!folder.isOpen() || fstat(folder.get(), &facts) != 0 || facts.st_uid != geteuid())
            continue;
        const TWLinuxProcessFolder process{ folder.get(), number, executableOf(folder.get()) };
        if (!process.executable.empty() && !call(process))
            return;
    }
}

std::vector<TWLinuxProcess> TWLinuxOwnProcesses()
{
    std::vector<TWLinuxProcess> processes;
    TWLinuxForEachOwnProcess([&](const TWLinuxProcessFolder& process) {
        processes.push_back(process.read());
        return true;
    });
    return processes;
}

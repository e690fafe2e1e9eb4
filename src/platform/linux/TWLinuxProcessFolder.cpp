#include "platform/linux/TWLinuxProcessFolder.h"

#include "platform/linux/TWLinuxProgram.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <memory>

namespace {

constexpr char StatFields[] = ") %*c %d %*d %d %*d %*d %*u %*u %*u %*u %*u %*u %*u %*d %*d %*d %*d %*d %*d %lu";

constexpr std::size_t LongestCommandLine = 4096; // in bytes, as the others
constexpr std::size_t LongestControlGroup = 4096;
constexpr std::size_t LongestEnvironment = 32768;
constexpr std::size_t LongestStatus = 4096;
constexpr std::size_t LongestFlatpakFile = 4096;
constexpr std::string_view Deleted = " (deleted)";

// The kernel gives these files whole to whoever reads enough at once, so no second call looks for their end.
template <std::size_t Limit>
std::string firstBytes(int folder, const char* name)
{
    const TWDescriptor file(openat(folder, name, O_RDONLY | O_CLOEXEC));
    char bytes[Limit];
    const auto length = file.isOpen() ? read(file.get(), bytes, Limit) : 0;
    return { bytes, length > 0 ? static_cast<std::size_t>(length) : 0 };
}

std::string linkTarget(int folder, const char* name)
{
    char target[PATH_MAX];
    const auto length = readlinkat(folder, name, target, sizeof target);
    return { target, length > 0 ? static_cast<std::size_t>(length) : 0 };
}

bool isSameFile(int folder, const char* name, const std::string& path)
{
    struct stat one;
    struct stat other;
    return fstatat(folder, name, &one, 0) == 0 && stat(path.c_str(), &other) == 0 && one.st_dev == other.st_dev
        && one.st_ino == other.st_ino;
}

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

TWLinuxProcessFolder::TWLinuxProcessFolder(int processes, const char* number)
    : number_(number)
    , folder_(openat(processes, number, O_PATH | O_DIRECTORY | O_CLOEXEC))
{
    struct stat facts;
    if (!isOpen() || fstat(descriptor(), &facts) != 0)
        return;
    isOwned_ = facts.st_uid == geteuid();
    executable_ = linkTarget(descriptor(), link_.c_str());
    isGuarded_ = executable_.empty() && errno == EACCES;
    if (isOwned_ && executable_.empty() && !isGuarded_)
        readOtherThreads();
    isDeleted_ = executable_.ends_with(Deleted) && !isSameFile(descriptor(), link_.c_str(), executable_);
    if (isDeleted_)
        executable_.resize(executable_.size() - Deleted.size());
}

// A process lives on after its first thread, which then has no executable any more.
void TWLinuxProcessFolder::readOtherThreads()
{
    const int folder = openat(descriptor(), "task", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> threads(folder < 0 ? nullptr : fdopendir(folder), closedir);
    while (const dirent* entry = threads && executable_.empty() ? readdir(threads.get()) : nullptr) {
        if (entry->d_name[0] == '.' || entry->d_name == number_)
            continue;
        link_ = "task/" + std::string(entry->d_name) + "/exe";
        executable_ = linkTarget(descriptor(), link_.c_str());
    }
}

// Where the file of a deleted executable was can only be told if the process sees the same file systems.
bool TWLinuxProcessFolder::isAmongOurFiles() const
{
    if (executable_.empty())
        return false;
    if (isDeleted_)
        return linkTarget(descriptor(), "ns/mnt") == linkTarget(AT_FDCWD, "/proc/self/ns/mnt");
    return isSameFile(descriptor(), link_.c_str(), executable_);
}

bool TWLinuxProcessFolder::isOfThisUser() const
{
    const auto text = firstBytes<LongestStatus>(descriptor(), "status");
    const auto line = text.find("\nUid:");
    uid_t real = 0;
    uid_t effective = 0;
    if (line == std::string::npos)
        return false;
    // NOLINTNEXTLINE(cert-err34-c): the kernel writes numbers that fit
    const int count = std::sscanf(&text[line], "\nUid: %u %u", &real, &effective);
    return count == 2 && real == geteuid() && effective == geteuid();
}

// The name of the program, in parentheses, may hold anything.
std::optional<TWLinuxStat> TWLinuxProcessFolder::stat() const
{
    const auto text = firstBytes<LongestStatus>(descriptor(), "stat");
    const auto name = text.rfind(')');
    if (name == std::string::npos)
        return std::nullopt;
    TWLinuxStat found;
    // NOLINTNEXTLINE(cert-err34-c): the kernel writes numbers that fit
    const int count = std::sscanf(&text[name], StatFields, &found.parent, &found.session, &found.start);
    return count == 3 ? std::optional(found) : std::nullopt;
}

TWLinuxUnit TWLinuxProcessFolder::unit() const
{
    const auto lines = firstBytes<LongestControlGroup>(descriptor(), "cgroup");
    TWLinuxUnit unit;
    for (std::string_view rest = lines; !rest.empty() && unit.name.empty();) {
        const auto line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(line.size() + 1, rest.size()));
        unit = TWLinuxUnitOfControlGroup(line);
    }
    return unit;
}

// The variables are inherited, so only those that name the process itself count.
std::optional<TWLinuxOrigin> TWLinuxProcessFolder::origin() const
{
    TWLinuxOrigin origin;
    bool isItsOwn = false;
    const auto environment = firstBytes<LongestEnvironment>(descriptor(), "environ");
    if (environment.empty())
        return std::nullopt;
    for (std::string_view rest = environment; !rest.empty();) {
        const auto variable = rest.substr(0, rest.find('\0'));
        rest.remove_prefix(std::min(variable.size() + 1, rest.size()));
        const auto value = variable.substr(std::min(variable.find('='), variable.size() - 1) + 1);
        if (variable.starts_with("GIO_LAUNCHED_DESKTOP_FILE="))
            origin.desktopFile = value;
        else if (variable.starts_with("GIO_LAUNCHED_DESKTOP_FILE_PID="))
            isItsOwn = value == number_;
        else if (variable.starts_with("SYSTEMD_EXEC_PID="))
            origin.isStartedByManager = value == number_;
        else if (variable.starts_with("APPIMAGE="))
            origin.appImage = value;
        else if (variable.starts_with("APPDIR="))
            origin.appFolder = value;
        else if (variable.starts_with("DISPLAY="))
            origin.display = value;
    }
    if (!isItsOwn)
        origin.desktopFile.clear();
    return origin;
}

std::vector<std::string> TWLinuxProcessFolder::words() const
{
    return TWText::split(firstBytes<LongestCommandLine>(descriptor(), "cmdline"), '\0');
}

std::string TWLinuxProcessFolder::workingFolder() const
{
    return linkTarget(descriptor(), "cwd");
}

std::string TWLinuxProcessFolder::flatpak() const
{
    constexpr std::string_view Name = "name=";
    for (const auto& line : TWText::split(firstBytes<LongestFlatpakFile>(descriptor(), "root/.flatpak-info"), '\n')) {
        if (line.starts_with(Name))
            return line.substr(Name.size());
    }
    return "";
}

TWLinuxProcess TWLinuxProcessFolder::read() const
{
    return { executable_, words(), unit(), origin().value_or(TWLinuxOrigin()) };
}

#include "platform/linux/TWLinuxProcessTable.h"

#include "platform/linux/TWLinuxProgram.h"
#include "support/TWPath.h"

#include <filesystem>

namespace {

constexpr std::size_t CheckedPerLook = 300; // besides the watched ones; takes a few milliseconds

// A desktop may move a process that it has just started to another unit.
constexpr std::uint64_t LooksUntilSettled = 20;

// The path itself if it leads nowhere.
std::string realPath(const std::string& path)
{
    std::error_code error;
    const auto real = std::filesystem::canonical(path, error);
    return error ? path : real.string();
}

bool isOurs(const TWLinuxProcessFolder& folder)
{
    return folder.isOwned() && (!folder.executable().empty() || folder.isGuarded());
}

std::string programOf(const TWLinuxKnownProcess& known, const TWLinuxProcessFolder& folder)
{
    if (folder.isGuarded())
        return known.words.empty() ? "" : known.words.front();
    auto program = known.executable;
    if (const auto script = TWLinuxProgram::script(TWPath::lastComponent(program), known.words); !script.empty())
        program = realPath(script.starts_with('/') ? script : TWPath::join(folder.workingFolder(), script));
    // Other programs that an AppImage starts inherit its variables.
    const auto& origin = known.origin;
    if (!origin.appImage.empty() && !origin.appFolder.empty() && TWPath::isAtOrBelow(program, origin.appFolder))
        return realPath(origin.appImage);
    return program;
}

// A process without a scope may run in a Flatpak as well.
std::string flatpakOf(const TWLinuxKnownProcess& known, const TWLinuxProcessFolder& folder)
{
    if (known.unit.kind == TWLinuxUnit::Kind::Flatpak)
        return known.unit.application;
    const bool maybe = known.executable.starts_with("/app/") || known.executable.ends_with("/bwrap");
    return maybe ? folder.flatpak() : "";
}

}

bool TWLinuxProcessTable::look(const std::set<pid_t>& watched, const TWCancellation& cancellation)
{
    const auto listed = TWLinuxListProcesses(folder_.get());
    if (!listed)
        return false;
    ++look_;
    for (const auto& each : *listed) {
        if (cancellation.cancelled())
            return false;
        auto& entry = entries_[each.process];
        if (entry.entry != each.entry) {
            entry = { each.entry, look_, look_ };
            stats_.erase(each.process);
            read(each.process, open(each.process));
        }
        entry.latest = look_;
    }
    std::erase_if(entries_, [this](const auto& each) {
        const bool hasGone = each.second.latest != look_;
        if (hasGone && processes_.erase(each.first) > 0)
            changes_.push_back(each.first);
        return hasGone;
    });
    std::erase_if(stats_, [this](const auto& each) { return !processes_.contains(each.first); });
    for (const auto process : watched)
        check(process);
    for (auto count = std::min(CheckedPerLook, listed->size()); count > 0; --count)
        check((*listed)[nextToCheck_++ % listed->size()].process);
    return !cancellation.cancelled();
}

// The list of all processes does not tell that one has become a zombie, has got another owner or, by exec, has become
// another program.
void TWLinuxProcessTable::check(pid_t process)
{
    const auto folder = open(process);
    const auto* known = find(process);
    const bool isSame = known ? known->isSettled && folder.executable() == known->executable
            && (known->words.empty() || folder.words() == known->words)
                              : true;
    if (isOurs(folder) != (known != nullptr) || !isSame)
        read(process, folder);
}

void TWLinuxProcessTable::read(pid_t process, const TWLinuxProcessFolder& folder)
{
    auto now = known(process, folder);
    const auto before = processes_.find(process);
    const bool wasKnown = before != processes_.end();
    if (now && wasKnown)
        before->second.isSettled = now->isSettled; // which is no change
    if (now ? wasKnown && before->second == *now : !wasKnown)
        return;
    changes_.push_back(process);
    if (now)
        processes_[process] = std::move(*now);
    else
        processes_.erase(before);
}

std::optional<TWLinuxKnownProcess> TWLinuxProcessTable::known(pid_t process, const TWLinuxProcessFolder& folder) const
{
    if (!isOurs(folder))
        return std::nullopt;
    TWLinuxKnownProcess known;
    known.process = process;
    known.executable = folder.executable();
    const auto name = TWPath::lastComponent(known.executable);
    if (folder.isGuarded() || TWLinuxProgram::isLauncher(name))
        known.words = folder.words();
    known.unit = folder.unit();
    const auto origin = folder.origin();
    known.origin = origin.value_or(TWLinuxOrigin());
    known.program = programOf(known, folder);
    known.flatpak = flatpakOf(known, folder);
    known.isShell = TWLinuxProgram::isShell(name);
    const auto first = entries_.at(process).first;
    known.isSettled = (origin || folder.isGuarded()) && (first == 1 || look_ - first > LooksUntilSettled);
    return known;
}

const TWLinuxKnownProcess* TWLinuxProcessTable::find(pid_t process) const
{
    const auto found = processes_.find(process);
    return found == processes_.end() ? nullptr : &found->second;
}

const TWLinuxStat* TWLinuxProcessTable::stat(pid_t process) const
{
    const auto known = stats_.find(process);
    if (known != stats_.end())
        return &known->second;
    const auto read = open(process).stat();
    return read ? &stats_.emplace(process, *read).first->second : nullptr;
}

// A parent that is younger than its child has got the identifier of the real one.
const TWLinuxKnownProcess* TWLinuxProcessTable::parentOf(const TWLinuxKnownProcess& process) const
{
    const auto* own = stat(process.process);
    const auto* parent = own ? find(own->parent) : nullptr;
    const auto* its = parent ? stat(parent->process) : nullptr;
    return its && its->start <= own->start ? parent : nullptr;
}

TWLinuxProcessFolder TWLinuxProcessTable::open(pid_t process) const
{
    return TWLinuxProcessFolder(folder_.get(), std::to_string(process).c_str());
}

std::set<pid_t> TWLinuxProcessTable::ancestors() const
{
    std::set<pid_t> ancestors;
    for (pid_t process = getpid(); process > 0 && ancestors.insert(process).second;) {
        const auto stat = open(process).stat();
        process = stat ? stat->parent : 0;
    }
    return ancestors;
}

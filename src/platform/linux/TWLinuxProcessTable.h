#pragma once

#include "platform/TWRunLoop.h"
#include "platform/linux/TWLinuxProcesses.h"

#include <set>
#include <unordered_map>

// What is remembered about a process of this user.
struct TWLinuxKnownProcess {
    pid_t process = 0;
    std::string executable; // its path; "" for a process that protects secrets
    std::vector<std::string> words; // if the executable alone does not tell what runs, else none
    std::string program; // what runs: the real path of a script or an AppImage, else the executable or the first word
    TWLinuxUnit unit;
    TWLinuxOrigin origin;
    std::string flatpak; // that it runs in; "" if in none
    bool isShell = false;
    bool isSettled = false; // else it may still be about to start

    friend bool operator==(const TWLinuxKnownProcess&, const TWLinuxKnownProcess&) = default;
};

// The processes of this user, looked at again and again. A later look lists all processes, but reads only those that it
// does not know yet. One thread at a time.
class TWLinuxProcessTable final {
public:
    // Notices that a watched process has ended or runs another program, and with more than a few hundred processes
    // takes some looks until it has noticed that about each of the others. False if the processes could not be listed
    // or the look was cancelled.
    bool look(const std::set<pid_t>& watched, const TWCancellation&);

    // The processes that have come, changed or gone since the last call.
    std::vector<pid_t> takeChanges() { return std::exchange(changes_, {}); }

    const std::unordered_map<pid_t, TWLinuxKnownProcess>& processes() const { return processes_; }

    // nullptr if there is no such process of this user.
    const TWLinuxKnownProcess* find(pid_t) const;

    // Of a process in the table, as it was when first asked for: one whose parent ends gets another one. Read only when
    // it is needed, because it takes a fourth of the time of a first look. nullptr if the process has ended.
    const TWLinuxStat* stat(pid_t) const;

    // nullptr if the parent has ended or belongs to another user.
    const TWLinuxKnownProcess* parentOf(const TWLinuxKnownProcess&) const;

    // The folder of the process that has the identifier now. Not open if none has.
    TWLinuxProcessFolder open(pid_t) const;

    // This process and those above it, whoever owns them.
    std::set<pid_t> ancestors() const;

private:
    struct Entry {
        ino_t entry = 0;
        std::uint64_t first = 0; // number of the first look that has found it
        std::uint64_t latest = 0;
    };

    void check(pid_t);
    void read(pid_t, const TWLinuxProcessFolder&);
    std::optional<TWLinuxKnownProcess> known(pid_t, const TWLinuxProcessFolder&) const;

    const TWDescriptor folder_ = TWLinuxOpenProcesses();
    std::unordered_map<pid_t, Entry> entries_; // of all users
    std::unordered_map<pid_t, TWLinuxKnownProcess> processes_;
    mutable std::unordered_map<pid_t, TWLinuxStat> stats_; // of those that were asked for
    std::vector<pid_t> changes_;
    std::uint64_t look_ = 0;
    std::size_t nextToCheck_ = 0;
};

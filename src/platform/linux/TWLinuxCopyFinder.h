#pragma once

#include "platform/linux/TWLinuxDesktop.h"
#include "platform/linux/TWLinuxListedApplications.h"

#include <map>

// A process of an application that is not below another one of it.
struct TWLinuxCopy {
    std::size_t application = 0; // its index in the list
    pid_t process = 0;
    TWLinuxStat stat;
    TWLinuxEvidence evidence = TWLinuxEvidence::None;
};

// The processes of a copy: the first one and what it has started, directly or through others, except applications of
// their own.
struct TWLinuxCopyProcesses {
    std::map<pid_t, std::uint64_t> starts; // of all, in clock ticks since the system started
    std::set<pid_t> own; // those of the application itself, not what runs in a terminal of it
};

// Finds the copies of the listed applications that run, again and again. One thread at a time.
class TWLinuxCopyFinder final {
public:
    // The list must outlive it.
    explicit TWLinuxCopyFinder(const TWLinuxListedApplications& listed)
        : listed_(listed)
    {
    }

    // Looks again, and takes those windows into account. False if the processes could not be listed or it was
    // cancelled.
    bool look(const std::vector<TWLinuxWindow>&, const TWCancellation&);

    // As of the latest complete look, in the order of the processes. Never Tidewell nor what it was started by.
    const std::vector<TWLinuxCopy>& copies() const { return copies_; }

    // As of the latest look.
    TWLinuxCopyProcesses processes(const TWLinuxCopy&);

    // Adds what they have started between an earlier look and the latest one.
    void addStarted(const TWLinuxCopy&, TWLinuxCopyProcesses&);

    const TWLinuxProcessTable& table() const { return table_; }

private:
    using Evidences = std::vector<TWLinuxEvidence>; // one for each application
    using Children = std::vector<const TWLinuxKnownProcess*>;

    Children childrenOf(pid_t parent);
    void judgeChanges();
    void judgeWindows(const std::vector<TWLinuxWindow>&);
    void addEvidence(pid_t, std::size_t application, TWLinuxEvidence);
    void findCopies();
    void addCopies(const TWLinuxKnownProcess&);
    void inherit(const TWLinuxCopy&);
    bool belongsTo(const TWLinuxCopy&, const TWLinuxKnownProcess&, const TWLinuxKnownProcess& parent) const;
    TWLinuxEvidence evidence(pid_t, std::size_t application) const;
    bool isFirst(const TWLinuxKnownProcess&, std::size_t application) const;

    const TWLinuxListedApplications& listed_;
    TWLinuxProcessTable table_;
    std::map<pid_t, Evidences> evidences_; // where there is any
    std::vector<std::pair<pid_t, pid_t>> children_; // after their parents, sorted; empty until they are asked for
    std::vector<TWLinuxCopy> copies_;
    std::set<pid_t> watched_; // the first processes of the copies of the latest complete look
};

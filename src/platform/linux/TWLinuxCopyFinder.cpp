#include "platform/linux/TWLinuxCopyFinder.h"

#include <algorithm>

namespace {

constexpr int DeepestTree = 1000; // of processes; ends a search in a table that contradicts itself

}

bool TWLinuxCopyFinder::look(const std::vector<TWLinuxWindow>& windows, const TWCancellation& cancellation)
{
    children_.clear();
    if (!table_.look(watched_, cancellation))
        return false;
    judgeChanges();
    judgeWindows(windows);
    findCopies();
    watched_.clear();
    for (const auto& copy : copies_)
        watched_.insert(copy.process);
    return true;
}

TWLinuxEvidence TWLinuxCopyFinder::evidence(pid_t process, std::size_t application) const
{
    const auto found = evidences_.find(process);
    return found == evidences_.end() ? TWLinuxEvidence::None : found->second[application];
}

// Does not replace earlier evidence.
void TWLinuxCopyFinder::addEvidence(pid_t process, std::size_t application, TWLinuxEvidence added)
{
    if (added == TWLinuxEvidence::None)
        return;
    auto& evidences = evidences_[process];
    evidences.resize(listed_.all().size());
    if (evidences[application] == TWLinuxEvidence::None)
        evidences[application] = added;
}

void TWLinuxCopyFinder::judgeChanges()
{
    for (const auto process : table_.takeChanges()) {
        evidences_.erase(process);
        const auto* known = table_.find(process);
        if (!known || !listed_.isInReach(*known, table_))
            continue;
        for (std::size_t application = 0; application < listed_.all().size(); ++application)
            addEvidence(process, application, listed_.evidence(listed_.all()[application], *known, table_));
    }
}

// The evidence stays when the windows are closed, because then the process may still run.
void TWLinuxCopyFinder::judgeWindows(const std::vector<TWLinuxWindow>& windows)
{
    std::map<pid_t, std::vector<TWLinuxWindow>> byProcess;
    for (const auto& window : windows)
        byProcess[static_cast<pid_t>(window.process)].push_back(window);
    for (const auto& [process, theirs] : byProcess) {
        const auto* known = table_.find(process);
        if (!known || !listed_.isInReach(*known, table_))
            continue;
        for (std::size_t application = 0; application < listed_.all().size(); ++application) {
            if (listed_.ownsWindows(listed_.all()[application], *known, theirs))
                addEvidence(process, application, TWLinuxEvidence::Program);
        }
    }
}

// Whether no process above it is one of the application's.
bool TWLinuxCopyFinder::isFirst(const TWLinuxKnownProcess& process, std::size_t application) const
{
    const auto* child = &process;
    for (int depth = 0; depth < DeepestTree; ++depth) {
        const auto* parent = table_.parentOf(*child);
        if (!parent || (child != &process && listed_.isSeparate(*child, *parent)))
            return true;
        if (evidence(parent->process, application) != TWLinuxEvidence::None)
            return false;
        child = parent;
    }
    return false;
}

void TWLinuxCopyFinder::findCopies()
{
    copies_.clear();
    const auto above = table_.ancestors();
    for (const auto& [process, evidences] : evidences_) {
        if (!above.contains(process))
            addCopies(*table_.find(process));
    }
    for (const auto& copy : copies_) {
        if (copy.evidence == TWLinuxEvidence::Started)
            inherit(copy);
    }
}

void TWLinuxCopyFinder::addCopies(const TWLinuxKnownProcess& process)
{
    for (std::size_t application = 0; application < listed_.all().size(); ++application) {
        const auto found = evidence(process.process, application);
        if (found == TWLinuxEvidence::None || !isFirst(process, application))
            continue;
        if (const auto* stat = table_.stat(process.process))
            copies_.push_back({ application, process.process, *stat, found });
    }
}

bool TWLinuxCopyFinder::belongsTo(
    const TWLinuxCopy& copy, const TWLinuxKnownProcess& process, const TWLinuxKnownProcess& parent) const
{
    const bool isOfApplication = evidence(process.process, copy.application) != TWLinuxEvidence::None;
    return table_.parentOf(process) == &parent && (isOfApplication || !listed_.isSeparate(process, parent))
        && listed_.isInReach(process, table_);
}

TWLinuxCopyProcesses TWLinuxCopyFinder::processes(const TWLinuxCopy& copy)
{
    TWLinuxCopyProcesses processes{ { { copy.process, copy.stat.start } }, { copy.process } };
    addStarted(copy, processes);
    return processes;
}

void TWLinuxCopyFinder::addStarted(const TWLinuxCopy& copy, TWLinuxCopyProcesses& processes)
{
    std::vector<pid_t> parents;
    for (const auto& [process, start] : processes.starts)
        parents.push_back(process);
    while (!parents.empty()) {
        const auto* parent = table_.find(parents.back());
        parents.pop_back();
        if (!parent)
            continue;
        for (const auto* child : childrenOf(parent->process)) {
            const auto* stat = table_.stat(child->process);
            if (!stat || !belongsTo(copy, *child, *parent)
                || !processes.starts.try_emplace(child->process, stat->start).second)
                continue;
            parents.push_back(child->process);
            const bool isOfApplication = evidence(child->process, copy.application) != TWLinuxEvidence::None;
            if (isOfApplication || stat->session == copy.stat.session)
                processes.own.insert(child->process);
        }
    }
}

TWLinuxCopyFinder::Children TWLinuxCopyFinder::childrenOf(pid_t parent)
{
    if (children_.empty()) {
        for (const auto& [process, known] : table_.processes()) {
            if (const auto* stat = table_.stat(process))
                children_.emplace_back(stat->parent, process);
        }
        std::sort(children_.begin(), children_.end());
    }
    Children children;
    for (auto each = std::lower_bound(children_.begin(), children_.end(), std::pair(parent, 0));
         each != children_.end() && each->first == parent; ++each)
        children.push_back(table_.find(each->second));
    return children;
}

// The program of the application may outlive the wrapper that has started it.
void TWLinuxCopyFinder::inherit(const TWLinuxCopy& copy)
{
    const auto known = processes(copy);
    for (const auto process : known.own)
        addEvidence(process, copy.application, TWLinuxEvidence::Started);
}

#include "cleaners/TWApplicationsCleaner.h"

#include "cleaners/TWPlanStream.h"
#include "support/TWText.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <tuple>

namespace {

constexpr auto NoApplications
    = "The Quit Applications cleaner is checked but no applications have been selected. You should either disable the "
      "cleaner or add some applications to it.";
constexpr auto Started = "Quitting applications...";
constexpr auto Success = "All applications were quit.";
constexpr auto Failure = "Some applications could not be quit!";
constexpr auto Quitting = "Quitting %@...";
constexpr auto WasForceQuit = "%@ was force quit.";
constexpr auto NotTerminated = "%@ could not be terminated!";

constexpr auto NotListed = "The running applications could not be listed, so nobody knows which of them run.";
constexpr auto Ended = "%@ (%@) has ended since the preview.";
constexpr auto NoAnswer
    = "%@ (%@) may not have been asked to quit: its windows or the message bus could not be reached.";

constexpr auto WereQuit = "%@ quit.";
constexpr auto StillRunning = "%@ still running.";

constexpr auto ProcessNumber = "process %@";
constexpr auto Since = "since %@";

constexpr TWRunLoop::Duration Interval{ 100 };
constexpr std::size_t ReportsPerTurn = 100;
constexpr std::int64_t NanosecondsPerSecond = 1'000'000'000;

// A running copy in a plan.
struct PlannedCopy final : TWPlannedThing {
    TWRunningCopy copy;
    std::string name;
};

const PlannedCopy& copyOf(const TWPlan& plan, const TWPlannedItem& item)
{
    return static_cast<const PlannedCopy&>(*plan.thing(item));
}

std::string processNumber(const TWRunningCopy& copy)
{
    return TWText::fill(ProcessNumber, { std::to_string(copy.process) });
}

// Of a running copy: the path under which it is listed, its process and the start of that.
using Identity = std::tuple<std::string, std::int64_t, std::uint64_t>;

Identity identityOf(const TWRunningCopy& copy)
{
    return { copy.application, copy.process, copy.start };
}

void addCopy(TWPlan& plan, const TWRunningCopy& copy, const std::string& name)
{
    auto thing = std::make_shared<PlannedCopy>();
    thing->copy = copy;
    thing->name = name;
    thing->path = copy.application;
    thing->which = processNumber(copy);
    const auto since = static_cast<std::time_t>(copy.since / NanosecondsPerSecond);
    thing->details = TWText::fill(Since, { TWText::localTime(since, "%Y-%m-%d %H:%M") });
    plan.addThing(name, TWPlannedAction::Quit, std::move(thing)).facts.modified = copy.since;
}

}

// The applications that were listed when the plan was made: one that is listed later is neither waited for nor ended.
// Not in a plan that could not find out what runs. No item is about it.
struct TWApplicationsCleaner::PlannedList final : TWPlannedThing {
    std::vector<Listed> listed;
};

TWApplicationsCleaner::TWApplicationsCleaner(const TWCleanerContext& context)
    : TWCleaner(context.deletion.runLoop)
    , context_(context)
{
    setStartedMessageString(Started);
    setSuccessMessageString(Success);
    setFailureMessageString(Failure);
}

std::string TWApplicationsCleaner::validate()
{
    const bool isEmpty = !info_.applicationsArray || info_.applicationsArray->empty();
    return isActive() && isEmpty ? NoApplications : "";
}

// In the order of the list; an application that stands in it twice is asked twice. A path that is not absolute would
// mean another program in every working directory.
std::vector<TWApplicationsCleaner::Listed> TWApplicationsCleaner::listed() const
{
    std::vector<Listed> listed;
    if (!info_.applicationsArray)
        return listed;
    for (const auto& record : *info_.applicationsArray) {
        const auto path = context_.deletion.places.expand(record.path);
        if (path.starts_with('/'))
            listed.push_back({ path, record.shownName() });
    }
    return listed;
}

std::vector<std::string> TWApplicationsCleaner::pathsOf(const std::vector<Listed>& listed)
{
    std::set<std::string> paths;
    for (const auto& each : listed)
        paths.insert(each.path);
    return { paths.begin(), paths.end() };
}

TWApplicationsCleaner::Matches TWApplicationsCleaner::find(
    TWRunningCopies& copies, const std::vector<Listed>& listed, const TWCancellation& cancellation)
{
    const auto running = copies.runningApplications(cancellation);
    if (!running)
        return std::nullopt;
    std::vector<Match> matches;
    for (const auto& each : listed) {
        for (const auto& copy : *running) {
            if (copy.application == each.path && (!each.only || each.only->isSame(copy)))
                matches.push_back({ copy, each.name });
        }
    }
    return matches;
}

std::unique_ptr<TWRunLoopHandle> TWApplicationsCleaner::makePlan(PlanGrown grown, PlanMade made) const
{
    TWPlan beginning;
    beginning.addProblems(info_.problems);
    auto work = [&workspace = context_.workspace, listed = listed()](TWPlanStream::Sink& sink) {
        TWPlan plan;
        const auto found = listed.empty()
            ? std::vector<Match>()
            : find(*workspace.runningCopies(pathsOf(listed)), listed, sink.cancellation());
        plan.incomplete = !found;
        if (!found)
            plan.addLine(std::string(NotListed), TWPlannedLine::Effect::Incomplete);
        for (const auto& match : found.value_or(std::vector<Match>()))
            addCopy(plan, match.copy, match.name);
        if (found) {
            auto list = std::make_shared<PlannedList>();
            list->listed = listed;
            plan.things.push_back(std::move(list));
        }
        sink.put(std::move(plan));
    };
    return std::make_unique<TWPlanStream>(
        runLoop(), std::move(beginning), std::move(work), std::move(grown), std::move(made));
}

void TWApplicationsCleaner::perform(TWPlannedJob planned)
{
    job_ = std::move(planned);
    forceQuit_ = info_.forceQuit;
    timeout_ = std::chrono::seconds(info_.timeout);
    outcome_ = {};
    outcome_.measured = true;
    asked_ = running_ = 0;
    listed_ = std::make_shared<const std::vector<Listed>>(isFromPreview() ? tickedInPreview() : listedInPlan());
    copies_ = listed_->empty() ? nullptr : context_.workspace.runningCopies(pathsOf(*listed_));
    sayLines(job_.plan, 0, job_.plan->lines.size(), [this] { look([this](const Matches& found) { askAll(found); }); });
}

std::vector<TWApplicationsCleaner::Listed> TWApplicationsCleaner::listedInPlan() const
{
    for (const auto& thing : job_.plan->things) {
        if (const auto* list = dynamic_cast<const PlannedList*>(thing.get()))
            return list->listed;
    }
    return {};
}

// A copy that the user has unticked is neither waited for nor ended.
std::vector<TWApplicationsCleaner::Listed> TWApplicationsCleaner::tickedInPreview() const
{
    std::vector<Listed> ticked;
    const auto& plan = *job_.plan;
    for (std::size_t item = 0; item < plan.items.size(); ++item) {
        const auto& planned = copyOf(plan, plan.items[item]);
        if (job_.isTicked(item))
            ticked.push_back({ planned.copy.application, planned.name, planned.copy });
    }
    return ticked;
}

// Looks in the background.
void TWApplicationsCleaner::look(std::function<void(const Matches&)> then)
{
    if (!copies_) {
        then(std::vector<Match>());
        return;
    }
    looking_ = std::make_unique<TWBackgroundStream<Matches>>(
        runLoop(), 1,
        [copies = copies_, listed = listed_](auto& sink) { sink.put(find(*copies, *listed, sink.cancellation())); },
        [this](Matches found) { found_ = std::move(found); },
        [this, then = std::move(then)] {
            const auto call = then;
            looking_.reset();
            call(std::exchange(found_, std::nullopt));
        });
}

void TWApplicationsCleaner::askAll(const Matches& found)
{
    if (!found) {
        cannotTell();
        return;
    }
    auto asked = planned(*found);
    asked_ = running_ = asked.size();
    sayLines(endedSincePreview(*found),
        [this, asked = std::move(asked)] { actOn(asked, askToQuit, [this] { startWaiting(); }); });
}

// What has started since the plan was made is waited for, but not asked.
std::vector<TWApplicationsCleaner::Match> TWApplicationsCleaner::planned(const std::vector<Match>& found) const
{
    std::set<Identity> known;
    for (const auto& item : job_.plan->items)
        known.insert(identityOf(copyOf(*job_.plan, item).copy));
    std::vector<Match> planned;
    std::copy_if(found.begin(), found.end(), std::back_inserter(planned),
        [&](const Match& match) { return known.contains(identityOf(match.copy)); });
    return planned;
}

std::vector<TWReportLine> TWApplicationsCleaner::endedSincePreview(const std::vector<Match>& found) const
{
    std::set<Identity> running;
    for (const auto& match : found)
        running.insert(identityOf(match.copy));
    std::vector<TWReportLine> lines;
    for (const auto& each : *listed_) {
        if (each.only && !running.contains(identityOf(*each.only)))
            lines.emplace_back(TWText::fill(Ended, { each.name, processNumber(*each.only) }));
    }
    return lines;
}

std::vector<std::string> TWApplicationsCleaner::askToQuit(TWRunningCopies& copies, const Match& match)
{
    const bool isAsked = copies.terminate(match.copy);
    std::vector<std::string> lines{ TWText::fill(Quitting, { match.name }) };
    if (!isAsked)
        lines.insert(lines.begin(), TWText::fill(NoAnswer, { match.name, processNumber(match.copy) }));
    return lines;
}

std::vector<std::string> TWApplicationsCleaner::forceToQuit(TWRunningCopies& copies, const Match& match)
{
    copies.forceTerminate(match.copy);
    return { TWText::fill(WasForceQuit, { match.name }) };
}

// Acts in the background, because a program may be slow to answer, and reports each in its turn.
void TWApplicationsCleaner::actOn(std::vector<Match> matches, Act act, std::function<void()> then)
{
    acting_ = std::make_unique<TWBackgroundStream<std::string>>(
        runLoop(), ReportsPerTurn,
        [copies = copies_, matches = std::move(matches), act](auto& sink) {
            for (const auto& match : matches) {
                if (sink.cancellation().cancelled())
                    return;
                for (auto& line : act(*copies, match))
                    sink.put(std::move(line));
            }
        },
        [this](const std::string& line) { reportProgress(line); },
        [this, then = std::move(then)] {
            const auto call = then;
            acting_.reset();
            call();
        });
}

void TWApplicationsCleaner::startWaiting()
{
    startDate_ = runLoop().now();
    timer_ = runLoop().every(Interval, [this] { checkForTermination(); });
}

// A look that takes longer than the interval is waited for.
void TWApplicationsCleaner::checkForTermination()
{
    if (!looking_)
        look([this](const Matches& running) { check(running); });
}

void TWApplicationsCleaner::check(const Matches& running)
{
    if (!running) {
        cannotTell();
        return;
    }
    running_ = running->size();
    if (running->empty())
        end(Outcome::Success);
    else if (runLoop().now() - startDate_ > timeout_)
        timedOut(*running);
}

// Kept on purpose: a forced quit is not checked afterwards and counts as a success.
void TWApplicationsCleaner::timedOut(const std::vector<Match>& running)
{
    timer_.reset();
    if (forceQuit_) {
        actOn(running, forceToQuit, [this] {
            running_ = 0;
            end(Outcome::Success);
        });
        return;
    }
    std::vector<TWReportLine> lines;
    lines.reserve(running.size());
    for (const auto& match : running)
        lines.emplace_back(TWText::fill(NotTerminated, { match.name }));
    sayLines(std::move(lines), [this] { end(Outcome::Failure); });
}

void TWApplicationsCleaner::cannotTell()
{
    timer_.reset();
    sayLines({ TWReportLine(NotListed) }, [this] { end(Outcome::Failure); });
}

void TWApplicationsCleaner::end(Outcome outcome)
{
    timer_.reset();
    outcome_.others = brought();
    if (outcome == Outcome::Success && !job_.plan->incomplete)
        finish(Outcome::Success, isFromPreview() ? TWPreviewSuccessMessage : Success);
    else
        finish(Outcome::Failure, Failure);
}

std::string TWApplicationsCleaner::brought() const
{
    const auto quit = asked_ - std::min(running_, asked_);
    const auto sentence = [](const char* text, std::size_t count) {
        return count == 0 ? "" : TWText::fill(text, { TWText::count(count, "application was", "applications were") });
    };
    return TWText::join({ sentence(WereQuit, quit), sentence(StillRunning, running_) }, " ");
}

// What has been asked to quit may still do so.
void TWApplicationsCleaner::stopPerforming()
{
    dropJob();
    ending_ = runLoop().after(TWRunLoop::Duration(0), [this] { end(Outcome::Failure); });
}

void TWApplicationsCleaner::dropJob()
{
    timer_.reset();
    looking_.reset();
    acting_.reset();
    ending_.reset();
}

TWProgress TWApplicationsCleaner::performed() const
{
    TWProgress progress;
    progress.planned = true;
    progress.items = asked_;
    progress.itemsDone = asked_ - std::min(running_, asked_);
    progress.waits = timer_ != nullptr;
    return progress;
}

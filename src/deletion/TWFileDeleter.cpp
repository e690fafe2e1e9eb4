#include "deletion/TWFileDeleter.h"

#include "support/TWLog.h"
#include "support/TWText.h"

using namespace std::chrono_literals;

namespace {

constexpr auto Busy
    = "TWFileDeleter: A deletion request was made while a deletion was ongoing! You can't do that unless you "
      "instanciate another TWFileCleaner in parallel.";
constexpr auto Refused = "Refused to delete \"%@\": %@";
constexpr auto FolderNotOpened = "\"%@\" was left alone, because its folder cannot be opened any more (%@).";
constexpr auto FolderChanged = "\"%@\" was left alone, because its folder is another one than when it was looked at.";
constexpr auto ChangedSincePreview = "\"%@\" was left alone, because it has changed since the preview.";
constexpr auto Ended = "\"%@\" was left alone, because the deletion was ended.";
constexpr auto NotStarted
    = "The deletion tool %@ could not be started (%@). Please install Tidewell and the package coreutils again.";
constexpr auto Killed = "The deletion tool %@ was ended by signal %@.";
constexpr auto ToolSaid = "The deletion tool said: %@";

// The most lines of one tool's output that are reported for one path.
constexpr std::size_t MostToolLines = 20;

// Our srm begins lines that are not about failures with this.
constexpr std::string_view NoteMark = "srm: note: ";

constexpr auto Search = TWDeletionRules::Search::NamesAndMoved;

struct ModeRow {
    TWSecureMode mode;
    const char* option; // nullptr if the tool is run without one
    const char* label;
};

constexpr ModeRow Modes[] = {
    { -1, nullptr, "Delete" },
    { 0, "--simple", "One-pass secure delete" },
    { 1, "--medium", "7-pass secure delete" },
    { 2, nullptr, "35-pass secure delete" },
};

// Kept on purpose: a mode that is none of the four overwrites like the strongest one and has an empty label.
constexpr ModeRow AnyOtherMode = { 0, nullptr, "" };

const ModeRow& rowFor(TWSecureMode mode)
{
    for (const auto& row : Modes) {
        if (row.mode == mode)
            return row;
    }
    return AnyOtherMode;
}

void addToolLines(TWDeletionReport& report, std::string_view output)
{
    for (std::size_t count = 0; !output.empty() && count < MostToolLines; ++count) {
        const auto line = output.substr(0, output.find('\n'));
        output.remove_prefix(std::min(line.size() + 1, output.size()));
        auto& lines = line.starts_with(NoteMark) ? report.notices : report.problems;
        if (!line.empty())
            lines.emplace_back(TWText::fill(ToolSaid, { line }));
    }
}

TWDeletionReport reportOn(const TWTermination& termination, const std::string& launchPath)
{
    TWDeletionReport report;
    switch (termination.kind) {
    case TWTermination::Kind::NotLaunched:
        report.problems.emplace_back(TWText::fill(NotStarted, { launchPath, TWErrorText(termination.code) }));
        break;
    case TWTermination::Kind::Signalled:
        report.problems.emplace_back(TWText::fill(Killed, { launchPath, std::to_string(termination.code) }));
        addToolLines(report, termination.output);
        break;
    case TWTermination::Kind::Exited:
        report.toolSucceeded = termination.code == 0;
        addToolLines(report, termination.output);
        break;
    }
    return report;
}

}

// Every mode that is none of the others overwrites most often.
TWSecureMode TWStrongerMode(TWSecureMode one, TWSecureMode other)
{
    const auto strength = [](TWSecureMode mode) { return mode < TWPlainDelete || mode > 2 ? 2 : mode; };
    return strength(one) < strength(other) ? other : one;
}

TWFileDeleter::TWFileDeleter(const TWDeletionTools& tools)
    : tools_(tools)
{
}

std::string TWFileDeleter::deleteFile(
    const TWDeletionTarget& target, TWSecureMode mode, TWWaiting waiting, TWAuthorization)
{
    // Kept on purpose: the authorization is ignored. No deletion ever asks for administrator rights.
    return deleteFileWithoutAuthorization(target, mode, waiting);
}

std::string TWFileDeleter::deleteFileWithoutAuthorization(
    const TWDeletionTarget& target, TWSecureMode mode, TWWaiting waiting)
{
    if (deleting_) {
        TWLog::write(Busy);
        return "";
    }
    deleting_ = true;
    report_ = {};
    target_ = target;
    mode_ = mode;
    isCompared_ = false;
    begin();
    auto& runLoop = tools_.runLoop;
    const std::weak_ptr<const int> life = life_;
    while (waiting == TWWaiting::UntilDone && !life.expired() && deleting_)
        runLoop.turn(100ms);
    return rowFor(mode).label;
}

// Starts the child if the target may be deleted. A kept path may be on a disk that does not answer, so new rules look
// at them in the background. If the rules have to know what lies below it, searches it first and then asks everything
// again, because it may have changed in the meantime.
void TWFileDeleter::begin()
{
    if (auto rules = tools_.guard.rules(); !rules->isPrepared()) {
        prepare(std::move(rules));
        return;
    }
    TWReportLine problem("");
    auto opened = openFolder(problem);
    if (!opened) {
        refuse(std::move(problem));
        return;
    }
    if (opened->rules->mustLookInside(opened->judged, opened->look, Search) && !isSearched(*opened)) {
        search(*opened);
        return;
    }
    if (mustCompare(opened->look)) {
        compare();
        return;
    }
    launch(*opened->folder, std::string(target_.name), mode_);
}

bool TWFileDeleter::mustCompare(const TWFileLook& look) const
{
    return previewCheck_ && look.isFolder() && !isCompared_;
}

// What lies deep inside a folder leaves no trace in the folder itself.
void TWFileDeleter::compare()
{
    comparing_ = std::make_unique<TWBackgroundStream<TWTreeSizes>>(
        tools_.runLoop, 1,
        [path = target_.realPath(), &fileSystem = tools_.fileSystem](
            auto& sink) { sink.put(TWAddUpTrees(fileSystem, { path }, sink.cancellation())); },
        [this](const TWTreeSizes& found) { compared(found); }, [] {});
}

void TWFileDeleter::compared(const TWTreeSizes& found)
{
    comparing_.reset();
    isCompared_ = found.end == TWWalkEnd::Complete
        && previewCheck_->isFolderUnchanged(target_.realPath(), found.sizes.front().print);
    if (isCompared_)
        begin();
    else
        refuse(TWReportLine::about(ChangedSincePreview, { target_.path() }));
}

bool TWFileDeleter::isSearched(const Opened& opened) const
{
    return opened.rules == searchedBy_ && opened.look.facts.identity == searchedFolder_;
}

void TWFileDeleter::prepare(std::shared_ptr<const TWDeletionRules> rules)
{
    searching_ = std::make_unique<TWBackgroundStream<TWObjection>>(
        tools_.runLoop, 1,
        [rules = std::move(rules)](auto& sink) {
            rules->prepare();
            sink.put("");
        },
        [this](const TWObjection& objection) { searched(objection); }, [] {});
}

void TWFileDeleter::search(const Opened& opened)
{
    searchedBy_ = opened.rules;
    searchedFolder_ = opened.look.facts.identity;
    searching_ = std::make_unique<TWBackgroundStream<TWObjection>>(
        tools_.runLoop, 1,
        [rules = opened.rules, judged = opened.judged, name = std::string(target_.name), look = opened.look](
            auto& sink) { sink.put(rules->objectionInside(judged, name, look, Search, sink.cancellation())); },
        [this](const TWObjection& objection) { searched(objection); }, [] {});
}

void TWFileDeleter::searched(const TWObjection& objection)
{
    searching_.reset();
    if (objection.empty())
        begin();
    else
        refuse(TWReportLine::about(Refused, { target_.path(), objection }));
}

// The delegate is told on a later turn.
void TWFileDeleter::refuse(TWReportLine problem)
{
    report_.problems.push_back(std::move(problem));
    refusal_ = tools_.runLoop.after(0ms, [this] { finish(); });
}

// Opens the parent folder if the target may be deleted there now, as far as can be told without looking below it, and
// notes in the report whether it is missing. Otherwise returns nothing and sets the problem.
std::optional<TWFileDeleter::Opened> TWFileDeleter::openFolder(TWReportLine& problem)
{
    const auto& target = target_;
    const auto path = target.path();
    if (!target.hasFolder()) {
        problem = TWReportLine::about(Refused, { path, TWDeletionRules::objectionToPath(path) });
        return std::nullopt;
    }
    const std::string name(target.name);
    int error = 0;
    auto folder = tools_.fileSystem.holdFolder(target.folder->realPath, error);
    if (!folder) {
        problem = TWReportLine::about(FolderNotOpened, { path, TWErrorText(error) });
        return std::nullopt;
    }
    if (folder->identity() != target.folder->identity) {
        problem = TWReportLine::about(FolderChanged, { path });
        return std::nullopt;
    }
    auto rules = tools_.guard.rules();
    auto judged = rules->judgeFolder(*folder, target.folder->realPath);
    const auto look = folder->look(name);
    report_.missing = look.presence == TWPresence::Gone;
    if (const auto objection = rules->objection(judged, name, look); !objection.empty()) {
        problem = TWReportLine::about(Refused, { path, objection });
        return std::nullopt;
    }
    if (const auto change = changeSincePreview(look); !change.empty()) {
        problem = TWReportLine::about(change, { path });
        return std::nullopt;
    }
    return Opened{ std::move(folder), std::move(rules), std::move(judged), look };
}

// The text that says why the target must stay, or "". What has disappeared since is no danger; the check afterwards
// reports it.
std::string_view TWFileDeleter::changeSincePreview(const TWFileLook& look) const
{
    if (!previewCheck_)
        return {};
    const bool fits
        = look.presence == TWPresence::Gone || (target_.seen && previewCheck_->isUnchanged(*target_.seen, look.facts));
    return fits ? std::string_view() : ChangedSincePreview;
}

void TWFileDeleter::launch(const TWHeldFolder& folder, const std::string& name, TWSecureMode mode)
{
    const bool plain = mode == TWPlainDelete;
    launchPath_ = plain ? tools_.places.rm : tools_.places.srm;
    std::vector<std::string> arguments{ "-rf" };
    if (plain)
        arguments.insert(arguments.end(), tools_.places.rmOptions.begin(), tools_.places.rmOptions.end());
    if (const auto* option = rowFor(mode).option)
        arguments.emplace_back(option);
    arguments.push_back("./" + name);
    task_ = tools_.launcher.launch(
        launchPath_, arguments, folder, [this](const TWTermination& end) { doneRunning(end); });
}

void TWFileDeleter::terminate()
{
    if (searching_ || comparing_) {
        searching_.reset();
        comparing_.reset();
        refuse(TWReportLine::about(Ended, { target_.path() }));
    }
    if (!task_)
        return;
    task_->terminate();
    patience_ = tools_.runLoop.after(100ms, [this] {
        if (task_)
            task_->kill();
    });
}

void TWFileDeleter::doneRunning(const TWTermination& termination)
{
    const bool missing = report_.missing;
    report_ = reportOn(termination, launchPath_);
    report_.missing = missing;
    noteOwnDeletion();
    finish();
}

// After a tool that failed nobody knows what it has deleted, so the folders around the target count as changed.
void TWFileDeleter::noteOwnDeletion()
{
    if (previewCheck_ && target_.seen && report_.toolSucceeded && !report_.missing)
        previewCheck_->noteOwnDeletion(target_.realPath(), *target_.seen);
}

// The delegate may destroy this object in its call.
void TWFileDeleter::finish()
{
    patience_.reset();
    task_.reset();
    refusal_.reset();
    target_ = {};
    searchedBy_.reset();
    deleting_ = false;
    if (delegate_)
        delegate_->fileDeleterDone();
}

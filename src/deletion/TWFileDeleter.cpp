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
constexpr auto NotStarted
    = "The deletion tool %@ could not be started (%@). Please install Tidewell and the package coreutils again.";
constexpr auto Killed = "The deletion tool %@ was ended by signal %@.";
constexpr auto ToolSaid = "The deletion tool said: %@";

// The most lines of one tool's output that are reported for one path.
constexpr std::size_t MostToolLines = 20;

// Our srm begins lines that are not about failures with this.
constexpr std::string_view NoteMark = "srm: note: ";

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
            lines.push_back(TWText::fill(ToolSaid, { line }));
    }
}

TWDeletionReport reportOn(const TWTermination& termination, const std::string& launchPath)
{
    TWDeletionReport report;
    switch (termination.kind) {
    case TWTermination::Kind::NotLaunched:
        report.problems.push_back(TWText::fill(NotStarted, { launchPath, TWErrorText(termination.code) }));
        break;
    case TWTermination::Kind::Signalled:
        report.problems.push_back(TWText::fill(Killed, { launchPath, std::to_string(termination.code) }));
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
    std::string problem;
    if (auto folder = openFolder(target, problem)) {
        if (previewCheck_)
            folderBefore_ = folder->look(".").facts;
        launch(*folder, std::string(target.name), mode);
        if (previewCheck_)
            changingFolder_ = std::move(folder);
    } else {
        report_.problems.push_back(std::move(problem));
        refusal_ = tools_.runLoop.after(0ms, [this] { finish(); });
    }
    auto& runLoop = tools_.runLoop;
    const std::weak_ptr<const int> life = life_;
    while (waiting == TWWaiting::UntilDone && !life.expired() && deleting_)
        runLoop.turn(100ms);
    return rowFor(mode).label;
}

// Returns the parent folder if the target may be deleted there now, and notes in the report whether it is missing.
// Otherwise returns nullptr and sets the problem.
std::unique_ptr<TWHeldFolder> TWFileDeleter::openFolder(const TWDeletionTarget& target, std::string& problem)
{
    const auto path = target.path();
    if (!target.hasFolder()) {
        problem = TWText::fill(Refused, { path, TWDeletionRules::objectionToPath(path) });
        return nullptr;
    }
    const std::string name(target.name);
    int error = 0;
    auto folder = tools_.fileSystem.holdFolder(target.folder->realPath, error);
    if (!folder) {
        problem = TWText::fill(FolderNotOpened, { path, TWErrorText(error) });
        return nullptr;
    }
    if (folder->identity() != target.folder->identity) {
        problem = TWText::fill(FolderChanged, { path });
        return nullptr;
    }
    const auto rules = tools_.guard.rules();
    const auto judged = rules->judgeFolder(*folder, target.folder->realPath);
    const auto look = folder->look(name);
    report_.missing = look.presence == TWPresence::Gone;
    if (const auto* objection = rules->objection(judged, name, look)) {
        problem = TWText::fill(Refused, { path, objection });
        return nullptr;
    }
    if (previewCheck_ && !isAsPreviewed(target, look)) {
        problem = TWText::fill(ChangedSincePreview, { path });
        return nullptr;
    }
    return folder;
}

// What has disappeared since is no danger; the check afterwards reports it.
bool TWFileDeleter::isAsPreviewed(const TWDeletionTarget& target, const TWFileLook& look) const
{
    if (!target.seen)
        return false;
    return look.presence == TWPresence::Gone || previewCheck_->isUnchanged(*target.seen, look.facts);
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
    noteOwnChange();
    const bool missing = report_.missing;
    report_ = reportOn(termination, launchPath_);
    report_.missing = missing;
    finish();
}

void TWFileDeleter::noteOwnChange()
{
    if (previewCheck_)
        previewCheck_->noteOwnChange(folderBefore_, changingFolder_->look(".").facts);
}

// The delegate may destroy this object in its call.
void TWFileDeleter::finish()
{
    patience_.reset();
    task_.reset();
    refusal_.reset();
    changingFolder_.reset();
    deleting_ = false;
    if (delegate_)
        delegate_->fileDeleterDone();
}

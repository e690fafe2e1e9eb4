#include "deletion/TWFileDeleteQueue.h"

#include "platform/TWOnAllCores.h"
#include "support/TWText.h"

#include <algorithm>
#include <cerrno>
#include <optional>
#include <unordered_map>
#include <unordered_set>

using namespace std::chrono_literals;

namespace {

constexpr auto Deleting = "%@ %@ ...";
constexpr auto FolderGoneText = "\"%@\" cannot be looked at, because its folder was moved or deleted meanwhile.";
constexpr auto FolderChangedText
    = "\"%@\" cannot be looked at, because its folder was replaced by another one meanwhile.";
constexpr auto VanishedText = "\"%@\" was gone before its turn came; if it was moved, it still exists.";
constexpr auto CouldNotDelete = "Could not delete %@";
constexpr auto NeverStarted = "Stopped: %@ not deleted.";
constexpr auto NotChecked = "Stopped: what was deleted could not be checked to the end.";

constexpr std::size_t PathsPerTurn = 500; // so that the window stays responsive

}

// Looks for the paths of a list. One thread at a time.
class TWFileDeleteQueue::Look final {
public:
    explicit Look(const TWFileSystem& fileSystem)
        : fileSystem_(fileSystem)
    {
    }

    Outcome at(const TWDeletionTarget& target)
    {
        if (!target.hasFolder())
            return Outcome::Unknown;
        openFolder(target.folder.get());
        if (!folder_)
            return missing_;
        const auto presence = folder_->look(std::string(target.name)).presence;
        if (presence == TWPresence::Unknown)
            return Outcome::Unknown;
        return presence == TWPresence::Gone ? Outcome::Gone : Outcome::Left;
    }

private:
    // The paths of one folder usually stand side by side.
    void openFolder(const TWPlannedFolder* planned)
    {
        if (planned == planned_)
            return;
        planned_ = planned;
        int error = 0;
        folder_ = fileSystem_.holdFolder(planned->realPath, error);
        if (!folder_) {
            missing_ = error == ENOENT || error == ENOTDIR || error == ELOOP ? Outcome::FolderGone : Outcome::Unknown;
        } else if (folder_->identity() != planned->identity) {
            folder_.reset();
            missing_ = Outcome::FolderChanged;
        }
    }

    const TWFileSystem& fileSystem_;
    const TWPlannedFolder* planned_ = nullptr; // the folder looked at last
    std::unique_ptr<TWHeldFolder> folder_; // nothing if it could not be opened
    Outcome missing_ = Outcome::Unknown; // then holds for every path in it
};

// Checks a list on other threads.
class TWFileDeleteQueue::Check final {
public:
    // deletedBefore holds the folders that the queues before this one have deleted; nullptr without a preview.
    Check(const Files& files, const Turns& turns, const TWFileSystem& fileSystem,
        const TWPreviewCheck::Paths* deletedBefore)
        : files_(files)
        , turns_(turns)
        , fileSystem_(fileSystem)
        , deletedBefore_(deletedBefore)
    {
    }

    // When cancelled, stops early; nobody waits for the result any more.
    Checked look(const TWCancellation& cancellation) const
    {
        const auto count = turns_.size();
        Checked checked;
        auto& outcomes = checked.outcomes;
        outcomes.assign(count, Outcome::Unknown);
        TWOnAllCores(count, [&](std::size_t begin, std::size_t end) {
            Look look(fileSystem_);
            for (auto index = begin; index < end && !cancellation.cancelled(); ++index)
                outcomes[index] = look.at(files_[index]);
        });
        if (!cancellation.cancelled()) {
            acquitInnerPaths(outcomes);
            findVanished(outcomes);
        }
        if (deletedBefore_)
            checked.deletedFolders = deletedFolders(outcomes);
        return checked;
    }

private:
    using Deleted = std::unordered_map<std::string, std::size_t>; // the first position of each path

    TWPreviewCheck::Paths deletedFolders(const std::vector<Outcome>& outcomes) const
    {
        TWPreviewCheck::Paths folders;
        for (std::size_t index = 0; index < outcomes.size(); ++index) {
            const auto& seen = files_[index].seen;
            if (isDeleted(index, outcomes) && seen && seen->kind == TWFileKind::Folder)
                folders.insert(files_[index].realPath());
        }
        return folders;
    }

    // A path is also gone if the folder around it was deleted on behalf of another path of this list or of a list
    // before it.
    void acquitInnerPaths(std::vector<Outcome>& outcomes) const
    {
        std::optional<Deleted> deleted;
        for (std::size_t index = 0; index < outcomes.size(); ++index) {
            if (outcomes[index] != Outcome::FolderGone)
                continue;
            if (!deleted)
                deleted = deletedPaths(outcomes);
            if (wentWithItsFolder(index, *deleted))
                outcomes[index] = Outcome::Gone;
        }
    }

    // A path that was left alone because somebody had moved its folder away did not go with a folder that was deleted
    // only after that.
    bool wentWithItsFolder(std::size_t index, const Deleted& deleted) const
    {
        const auto& path = files_[index].folder->realPath;
        for (auto end = path.size(); end != 0 && end != std::string::npos; end = path.rfind('/', end - 1)) {
            const auto around = path.substr(0, end);
            const auto found = deleted.find(around);
            if (found != deleted.end() && (turns_[index] != Turn::Failed || found->second < index))
                return true;
            if (deletedBefore_ && deletedBefore_->contains(around))
                return true;
        }
        return false;
    }

    Deleted deletedPaths(const std::vector<Outcome>& outcomes) const
    {
        Deleted deleted;
        for (std::size_t index = 0; index < outcomes.size(); ++index) {
            if (isDeleted(index, outcomes))
                deleted.try_emplace(files_[index].realPath(), index);
        }
        return deleted;
    }

    bool isDeleted(std::size_t index, const std::vector<Outcome>& outcomes) const
    {
        return outcomes[index] == Outcome::Gone && turns_[index] == Turn::Succeeded;
    }

    void findVanished(std::vector<Outcome>& outcomes) const
    {
        if (std::ranges::count(turns_, Turn::Missing) == 0)
            return;
        std::unordered_set<std::string> earlier;
        for (std::size_t index = 0; index < outcomes.size(); ++index) {
            const bool first = earlier.insert(files_[index].realPath()).second;
            if (first && files_[index].seen && turns_[index] == Turn::Missing && outcomes[index] == Outcome::Gone)
                outcomes[index] = Outcome::Vanished;
        }
    }

    const Files& files_;
    const Turns& turns_;
    const TWFileSystem& fileSystem_;
    const TWPreviewCheck::Paths* deletedBefore_;
};

TWFileDeleteQueue::TWFileDeleteQueue(const TWDeletionTools& tools, Announcing announcing)
    : tools_(tools)
    , announcing_(announcing)
    , fileDeleter_(tools)
{
    fileDeleter_.setDelegate(this);
}

void TWFileDeleteQueue::setPreviewCheck(std::shared_ptr<TWPreviewCheck> check)
{
    previewCheck_ = check;
    fileDeleter_.setPreviewCheck(std::move(check));
}

void TWFileDeleteQueue::addFilesFromArray(std::vector<TWDeletionTarget> targets)
{
    if (files_->empty())
        *files_ = std::move(targets);
    else
        files_->insert(files_->end(), targets.begin(), targets.end());
}

void TWFileDeleteQueue::deleteFiles(TWAuthorization authorization)
{
    authorization_ = authorization;
    if (running_)
        return;
    tools_.guard.renew();
    deleteIndex_ = 0;
    running_ = deleting_ = true;
    stopped_ = false;
    reports_.clear();
    dropCheck();
    deleteNextFile();
}

void TWFileDeleteQueue::deleteNextFile()
{
    if (stopped_ || deleteIndex_ >= files_->size()) {
        running_ = deleting_ = false;
        if (delegate_)
            delegate_->fileDeleteQueueDone();
        return;
    }
    const auto& target = (*files_)[deleteIndex_++];
    const auto label = fileDeleter_.deleteFile(target, secureDeleteMode_, TWWaiting::Asynchronously, authorization_);
    if (announcing_ == Announcing::EveryPath)
        report(TWReportLine::about(Deleting, { label, target.path() }, 1));
}

void TWFileDeleteQueue::fileDeleterProgressed(const std::string& message)
{
    report(message);
}

void TWFileDeleteQueue::fileDeleterDone()
{
    const auto& result = fileDeleter_.report();
    if (!result.problems.empty() || !result.notices.empty() || !result.toolSucceeded || result.missing)
        reports_[deleteIndex_ - 1] = result;
    deleteNextFile();
}

TWFileDeleteQueue::Turns TWFileDeleteQueue::turns() const
{
    Turns turns(stopped_ ? deleteIndex_ : files_->size(), Turn::Succeeded);
    for (const auto& [index, report] : reports_) {
        if (!report.toolSucceeded || !report.problems.empty())
            turns[index] = Turn::Failed;
        else if (report.missing)
            turns[index] = Turn::Missing;
    }
    return turns;
}

void TWFileDeleteQueue::verify()
{
    dropCheck();
    const auto deletedBefore = previewCheck_ ? previewCheck_->deletedFolders() : nullptr;
    check_ = std::make_unique<TWBackgroundStream<Checked>>(
        tools_.runLoop, 1,
        [turns = turns(), files = std::shared_ptr<const Files>(files_), &fileSystem = tools_.fileSystem, deletedBefore](
            auto& sink) { sink.put(Check(*files, turns, fileSystem, deletedBefore.get()).look(sink.cancellation())); },
        [this](Checked result) { checked(std::move(result)); }, [] {});
}

void TWFileDeleteQueue::dropCheck()
{
    check_.reset();
    saying_.reset();
    ending_.reset();
    notable_.clear();
}

void TWFileDeleteQueue::checked(Checked result)
{
    if (previewCheck_)
        previewCheck_->noteDeleted(result.deletedFolders);
    outcomes_ = std::move(result.outcomes);
    outcomes_.resize(files_->size(), Outcome::NotStarted);
    distrustFailedOverwriting();
    bool nothingLeft = true;
    for (std::size_t index = 0; index < outcomes_.size(); ++index) {
        nothingLeft = nothingLeft && isGone(index);
        if (isNotable(index))
            notable_.push_back(index);
    }
    saying_ = std::make_unique<TWPacedSteps>(
        tools_.runLoop, notable_.size(), PathsPerTurn, [this](std::size_t step) { sayOutcome(notable_[step]); },
        [this, nothingLeft] { finishVerifying(nothingLeft); });
}

// A tool that was to overwrite a file and failed may have left the contents under another name.
void TWFileDeleteQueue::distrustFailedOverwriting()
{
    for (const auto& [index, report] : reports_) {
        if (secureDeleteMode_ != TWPlainDelete && !report.toolSucceeded && outcomes_[index] == Outcome::Gone)
            outcomes_[index] = Outcome::Unknown;
    }
}

bool TWFileDeleteQueue::isDeleted(std::size_t index) const
{
    if (outcomes_.at(index) != Outcome::Gone)
        return false;
    const auto found = reports_.find(index);
    return found == reports_.end() || (found->second.toolSucceeded && !found->second.missing);
}

bool TWFileDeleteQueue::isNotable(std::size_t index) const
{
    if (outcomes_[index] != Outcome::Gone)
        return outcomes_[index] != Outcome::NotStarted;
    const auto found = reports_.find(index);
    return found != reports_.end() && !found->second.notices.empty();
}

void TWFileDeleteQueue::sayOutcome(std::size_t index)
{
    const auto outcome = outcomes_[index];
    const auto path = (*files_)[index].path();
    const auto found = reports_.find(index);
    std::vector<TWReportLine> lines;
    if (found != reports_.end() && !isGone(index))
        lines = found->second.problems;
    if (lines.empty() && outcome == Outcome::FolderGone)
        lines.push_back(TWReportLine::about(FolderGoneText, { path }));
    if (lines.empty() && outcome == Outcome::FolderChanged)
        lines.push_back(TWReportLine::about(FolderChangedText, { path }));
    if (outcome == Outcome::Vanished && announcing_ == Announcing::EveryPath)
        lines.push_back(TWReportLine::about(VanishedText, { path }));
    if (found != reports_.end())
        lines.insert(lines.end(), found->second.notices.begin(), found->second.notices.end());
    if (!isGone(index))
        lines.push_back(TWReportLine::about(CouldNotDelete, { path }));
    const std::weak_ptr<const int> life = life_;
    for (const auto& line : lines) {
        report(line);
        if (life.expired())
            return;
    }
}

void TWFileDeleteQueue::finishVerifying(bool nothingLeft)
{
    // These were never touched, so nobody needs to look: a stop has to be quick.
    const auto untouched = stopped_ ? files_->size() - deleteIndex_ : 0;
    const std::weak_ptr<const int> life = life_;
    if (untouched > 0 && announcing_ == Announcing::EveryPath)
        report(TWText::fill(NeverStarted, { TWText::count(untouched, "item was", "items were") }));
    if (life.expired() || !delegate_)
        return;
    delegate_->fileDeleteQueueVerified(nothingLeft);
}

void TWFileDeleteQueue::terminate()
{
    fileDeleter_.terminate();
    running_ = false;
}

void TWFileDeleteQueue::stop()
{
    const bool checking = check_ && !saying_;
    if (checking) {
        stopped_ = true;
        check_.reset();
        outcomes_.assign(files_->size(), Outcome::NotStarted);
        ending_ = tools_.runLoop.after(0ms, [this] { endStoppedCheck(); });
    } else if (deleting_) {
        stopped_ = true;
        fileDeleter_.terminate();
    } else if (outcomes_.empty()) {
        stopped_ = true;
    }
}

void TWFileDeleteQueue::endStoppedCheck()
{
    const std::weak_ptr<const int> life = life_;
    report(std::string(NotChecked));
    if (!life.expired() && delegate_)
        delegate_->fileDeleteQueueVerified(false);
}

void TWFileDeleteQueue::report(const TWReportLine& line)
{
    if (delegate_)
        delegate_->fileDeleteQueueProgressed(line);
}

#include "cleaners/TWTrashCleaner.h"

#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <cerrno>

namespace {

constexpr auto Started = "Emptying the Trash...";
constexpr auto Unreadable = "The Trash folder \"%@\" could not be read (%@).";
constexpr auto Success = "The Trash is now empty.";
constexpr auto Failure = "Some files could not be removed from the Trash!";

constexpr std::string_view RecordEnding = ".trashinfo";

// Sizes of trashed folders, kept by file managers; names what was in the Trash.
constexpr auto SizesFile = "directorysizes";

}

TWTrashCleaner::TWTrashCleaner(const TWDeletionTools& tools, const TWSettings& settings)
    : tools_(tools)
    , settings_(settings)
    , info_(tools.places.abbreviate(tools.places.trash + "/files"))
{
    setStartedMessageString(Started);
    setSuccessMessageString(Success);
    setFailureMessageString(Failure);
}

TWTrashCleaner::Plan TWTrashCleaner::plan() const
{
    Plan plan;
    const auto folder = tools_.places.standardize(info_);
    int error = 0;
    const auto real = tools_.fileSystem.realPath(folder, TWLinkAtEnd::DoNotFollow, &error);
    const auto open = real ? tools_.fileSystem.openFolder(*real, error) : nullptr;
    if (!open) {
        if (error != ENOENT)
            plan.problem = TWText::fill(Unreadable, { folder, TWErrorText(error) });
        return plan;
    }
    for (const auto& entry : open->entries())
        plan.paths.push_back(folder + "/" + std::string(entry.name));
    return plan;
}

void TWTrashCleaner::clean()
{
    if (!isActive()) {
        done();
        return;
    }
    setCancelled(false);
    reportStarted();
    recordsQueue_.reset();
    fileDeleteQueue_ = makeQueue(TWFileDeleteQueue::Announcing::EveryPath);
    records_ = recordNames();
    auto plan = this->plan();
    if (!plan.problem.empty())
        reportProgress(plan.problem);
    fileDeleteQueue_->addFilesFromArray(std::move(plan.paths));
    fileDeleteQueue_->deleteFiles(
        settings_.boolean(TWKey::UseAuthorization) ? TWAuthorization::Yes : TWAuthorization::No);
}

void TWTrashCleaner::stop()
{
    auto* queue = recordsQueue_ ? recordsQueue_.get() : fileDeleteQueue_.get();
    if (!queue || !queue->running())
        return;
    setCancelled(true);
    queue->stop();
}

// The records come after the items, so that an item that stays keeps its record.
void TWTrashCleaner::fileDeleteQueueDone()
{
    if (recordsQueue_ || cancelled()) {
        verify();
        return;
    }
    recordsQueue_ = makeQueue(TWFileDeleteQueue::Announcing::OnlyWhatIsLeft);
    recordsQueue_->addFilesFromArray(recordsWithoutItem());
    recordsQueue_->deleteFiles(settings_.boolean(TWKey::UseAuthorization) ? TWAuthorization::Yes : TWAuthorization::No);
}

void TWTrashCleaner::verify()
{
    const bool itemsGone = fileDeleteQueue_->verify();
    const bool recordsGone = !recordsQueue_ || recordsQueue_->verify();
    if (cancelled())
        reportFailure(TWTerminatedMessage);
    else if (itemsGone && recordsGone)
        reportSuccess(Success);
    else
        reportFailure(Failure);
    done();
}

void TWTrashCleaner::fileDeleteQueueProgressed(const std::string& message)
{
    reportProgress(message);
}

std::unique_ptr<TWFileDeleteQueue> TWTrashCleaner::makeQueue(TWFileDeleteQueue::Announcing announcing)
{
    auto queue = std::make_unique<TWFileDeleteQueue>(tools_, announcing);
    queue->setDelegate(this);
    if (settings_.boolean(TWKey::SecurelyDeleteFiles))
        queue->setSecureDeleteMode(settings_.integer(TWKey::SecurelyDeleteFilesMode));
    return queue;
}

std::vector<std::string> TWTrashCleaner::recordNames() const
{
    std::vector<std::string> names;
    const std::string trash(TWPath::parent(tools_.places.standardize(info_)));
    int error = 0;
    const auto real = tools_.fileSystem.realPath(trash + "/info");
    if (const auto open = real ? tools_.fileSystem.openFolder(*real, error) : nullptr) {
        for (const auto& entry : open->entries()) {
            if (entry.name.ends_with(RecordEnding) && entry.name.size() > RecordEnding.size())
                names.emplace_back(entry.name);
        }
    }
    return names;
}

// A record that came during the run belongs to an item that is just being thrown away: the record is written first.
std::vector<std::string> TWTrashCleaner::recordsWithoutItem() const
{
    std::vector<std::string> records;
    // Of items that cannot be listed nobody can say that they are gone.
    if (!plan().problem.empty())
        return records;
    const auto items = tools_.places.standardize(info_);
    const std::string trash(TWPath::parent(items));
    for (const auto& name : records_) {
        const auto item = items + "/" + name.substr(0, name.size() - RecordEnding.size());
        if (tools_.fileSystem.look(item).presence == TWPresence::Gone)
            records.push_back(trash + "/info/" + name);
    }
    if (const auto sizes = trash + "/" + SizesFile; tools_.fileSystem.look(sizes).isThere())
        records.push_back(sizes);
    return records;
}

#include "deletion/TWFileDeleteQueue.h"

#include "support/TWText.h"

#include <iterator>

namespace {

constexpr auto Deleting = "%@ %@ ...";
constexpr auto CouldNotDelete = "Could not delete %@";
constexpr auto NotStarted = "Stopped: %@ not deleted.";

}

TWFileDeleteQueue::TWFileDeleteQueue(const TWDeletionTools& tools, Announcing announcing)
    : fileSystem_(tools.fileSystem)
    , announcing_(announcing)
    , fileDeleter_(tools)
{
    fileDeleter_.setDelegate(this);
}

void TWFileDeleteQueue::addFilesFromArray(std::vector<std::string> paths)
{
    files_.insert(files_.end(), std::make_move_iterator(paths.begin()), std::make_move_iterator(paths.end()));
}

void TWFileDeleteQueue::deleteFiles(TWAuthorization authorization)
{
    authorization_ = authorization;
    if (running_)
        return;
    deleteIndex_ = 0;
    running_ = true;
    stopped_ = false;
    problems_.clear();
    deleteNextFile();
}

void TWFileDeleteQueue::deleteNextFile()
{
    if (stopped_ || deleteIndex_ >= files_.size()) {
        running_ = false;
        if (delegate_)
            delegate_->fileDeleteQueueDone();
        return;
    }
    const auto& path = files_[deleteIndex_++];
    const auto label = fileDeleter_.deleteFile(path, secureDeleteMode_, TWWaiting::Asynchronously, authorization_);
    if (announcing_ == Announcing::EveryPath)
        report(TWText::fill(Deleting, {label, path}));
}

void TWFileDeleteQueue::fileDeleterProgressed(const std::string& message)
{
    report(message);
}

void TWFileDeleteQueue::fileDeleterDone()
{
    if (!fileDeleter_.problem().empty())
        problems_[deleteIndex_ - 1] = fileDeleter_.problem();
    deleteNextFile();
}

bool TWFileDeleteQueue::verify()
{
    const auto lines = linesAboutWhatIsLeft();
    const std::weak_ptr<const int> life = life_;
    for (const auto& line : lines) {
        report(line);
        if (life.expired())
            break;
    }
    return lines.empty();
}

std::vector<std::string> TWFileDeleteQueue::linesAboutWhatIsLeft() const
{
    std::vector<std::string> lines;
    const auto started = stopped_ ? deleteIndex_ : files_.size();
    for (std::size_t index = 0; index < started; ++index) {
        if (!fileSystem_.exists(files_[index]))
            continue;
        if (const auto problem = problems_.find(index); problem != problems_.end())
            lines.push_back(problem->second);
        lines.push_back(TWText::fill(CouldNotDelete, {files_[index]}));
    }
    std::size_t untouched = 0;
    for (std::size_t index = started; index < files_.size(); ++index)
        untouched += fileSystem_.exists(files_[index]);
    if (untouched > 0)
        lines.push_back(TWText::fill(NotStarted, {TWText::count(untouched, "item was", "items were")}));
    return lines;
}

void TWFileDeleteQueue::terminate()
{
    fileDeleter_.terminate();
    running_ = false;
}

void TWFileDeleteQueue::stop()
{
    stopped_ = true;
    fileDeleter_.terminate();
}

void TWFileDeleteQueue::report(const std::string& message)
{
    if (delegate_)
        delegate_->fileDeleteQueueProgressed(message);
}

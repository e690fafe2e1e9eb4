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
    notices_.clear();
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
        report(TWText::fill(Deleting, { label, path }));
}

void TWFileDeleteQueue::fileDeleterProgressed(const std::string& message)
{
    report(message);
}

void TWFileDeleteQueue::fileDeleterDone()
{
    if (!fileDeleter_.problem().empty())
        problems_[deleteIndex_ - 1] = fileDeleter_.problem();
    if (!fileDeleter_.notice().empty())
        notices_[deleteIndex_ - 1] = fileDeleter_.notice();
    deleteNextFile();
}

bool TWFileDeleteQueue::verify()
{
    std::vector<std::string> lines;
    const bool nothingLeft = findWhatIsLeft(lines);
    const std::weak_ptr<const int> life = life_;
    for (const auto& line : lines) {
        report(line);
        if (life.expired())
            break;
    }
    return nothingLeft;
}

bool TWFileDeleteQueue::findWhatIsLeft(std::vector<std::string>& lines) const
{
    bool nothingLeft = true;
    const auto started = stopped_ ? deleteIndex_ : files_.size();
    for (std::size_t index = 0; index < started; ++index) {
        const bool left = fileSystem_.look(files_[index]).presence != TWPresence::Gone;
        const auto& remarks = left ? problems_ : notices_;
        if (const auto remark = remarks.find(index); remark != remarks.end())
            lines.push_back(remark->second);
        if (left)
            lines.push_back(TWText::fill(CouldNotDelete, { files_[index] }));
        nothingLeft = nothingLeft && !left;
    }
    // These were never touched, so nobody needs to look: a stop has to be quick.
    const auto untouched = files_.size() - started;
    if (untouched > 0)
        lines.push_back(TWText::fill(NotStarted, { TWText::count(untouched, "item was", "items were") }));
    return nothingLeft && untouched == 0;
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

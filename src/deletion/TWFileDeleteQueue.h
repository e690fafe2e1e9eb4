#pragma once

#include "deletion/TWFileDeleter.h"
#include "platform/TWBackgroundStream.h"
#include "platform/TWPacedSteps.h"

#include <map>

class TWFileDeleteQueueDelegate {
public:
    virtual void fileDeleteQueueProgressed(const TWReportLine&) { }

    // Every path has been handed to the deleter, or the queue was stopped, and the last child has ended.
    virtual void fileDeleteQueueDone() { }

    // verify() has ended: nothingLeft is true only if every path of the list was looked at and none exists any more.
    virtual void fileDeleteQueueVerified(bool /*nothingLeft*/) { }

protected:
    ~TWFileDeleteQueueDelegate() = default;
};

// Deletes a list of paths one after another through one deleter, then checks what is left. A queue is used for one run.
// Main thread. Destroying it, also inside a call to the delegate, ends the running child, and no further call is made.
class TWFileDeleteQueue final : private TWFileDeleterDelegate {
public:
    enum class Announcing { EveryPath, OnlyWhatIsLeft };

    explicit TWFileDeleteQueue(const TWDeletionTools&, Announcing = Announcing::EveryPath);

    void setDelegate(TWFileDeleteQueueDelegate* delegate) { delegate_ = delegate; }
    void setSecureDeleteMode(TWSecureMode mode) { secureDeleteMode_ = mode; }
    void setPreviewCheck(std::shared_ptr<TWPreviewCheck> check);

    // Adds to the end of the list, before deleteFiles(). Nothing is checked, and duplicates are allowed.
    void addFile(TWDeletionTarget target) { files_->push_back(std::move(target)); }
    void addFilesFromArray(std::vector<TWDeletionTarget>);
    std::size_t count() const { return files_->size(); }

    // Starts with the first path, or reports being done at once if there is none. While running it only stores the
    // authorization.
    void deleteFiles(TWAuthorization);

    // Looks in the background for what still exists, each path in the folder in which it was planned, and reports each
    // path that does, with the reasons before it where some are known. In between it reports what the tool had to say
    // about paths that are gone, and which paths had disappeared before their turn. A path that could not be looked at
    // counts as left. If the queue was stopped, the paths that were never started are reported as one number.
    // fileDeleteQueueVerified() follows on a later turn. Call it after the done call, as often as needed: each call
    // looks again and replaces a check that is still going on.
    void verify();

    // After verification: whether the path at that position of the list is certainly gone.
    bool isGone(std::size_t index) const
    {
        return outcomes_.at(index) == Outcome::Gone || outcomes_.at(index) == Outcome::Vanished;
    }

    // After verification: whether it is gone because this queue has deleted it, and not for another reason.
    bool isDeleted(std::size_t index) const;

    // Ends the running child. Kept on purpose: the queue then goes on with its next path.
    void terminate();

    // Differs on purpose: ends the running child and starts no further path; the usual done call follows. A
    // verification that is going on ends, and its call follows with false. Before the start no call follows, and
    // verify() reports that nothing was started.
    void stop();

    // From deleteFiles() to the done call or terminate().
    bool running() const { return running_; }
    bool stopped() const { return stopped_; }

    // Number of paths whose turn is over.
    std::size_t finished() const { return deleteIndex_ - (deleting_ ? 1 : 0); }

private:
    // What the disk says about a path after its deletion.
    enum class Outcome : std::uint8_t {
        Gone,
        Vanished, // gone as well, but the plan saw it and it had disappeared before its turn
        Left,
        FolderGone, // its folder does not exist any more
        FolderChanged, // its folder is another one now
        Unknown, // the disk could not be asked, or the tool that had to overwrite it failed
        NotStarted,
    };

    // How the turn of a path went.
    enum class Turn : std::uint8_t {
        Succeeded,
        Missing, // the tool succeeded, but nothing was there
        Failed, // no tool was started, or it had a problem
    };
    using Turns = std::vector<Turn>;
    struct Checked {
        std::vector<Outcome> outcomes; // of the paths whose turn came
        TWPreviewCheck::Paths deletedFolders; // if the list comes from a preview
    };
    class Look;
    class Check;
    using Files = std::vector<TWDeletionTarget>;

    void fileDeleterProgressed(const std::string& message) override;
    void fileDeleterDone() override;
    void deleteNextFile();
    void report(const TWReportLine&);
    Turns turns() const;
    void dropCheck();
    void checked(Checked);
    void distrustFailedOverwriting();
    bool isNotable(std::size_t index) const;
    void sayOutcome(std::size_t index);
    void finishVerifying(bool nothingLeft);
    void endStoppedCheck();

    const std::shared_ptr<const int> life_
        = std::make_shared<const int>(0); // tells whether the delegate destroyed this
    TWDeletionTools tools_;
    const Announcing announcing_;
    TWFileDeleter fileDeleter_;
    TWFileDeleteQueueDelegate* delegate_ = nullptr;
    std::shared_ptr<TWPreviewCheck> previewCheck_; // nullptr if the list was planned just now
    TWSecureMode secureDeleteMode_ = TWPlainDelete;
    TWAuthorization authorization_ = TWAuthorization::No;
    bool running_ = false;
    bool deleting_ = false; // like running_, but terminate() leaves it set: the done call is still to come
    bool stopped_ = false;
    std::size_t deleteIndex_ = 0; // of the next path to start
    std::shared_ptr<Files> files_ = std::make_shared<Files>(); // read by the check in the background once all are added
    std::map<std::size_t, TWDeletionReport> reports_; // by index, of the few paths that have something to report
    std::vector<Outcome> outcomes_; // by index, after the check
    std::vector<std::size_t> notable_; // paths about which verify() has something to say
    std::unique_ptr<TWBackgroundStream<Checked>> check_;
    std::unique_ptr<TWPacedSteps> saying_;
    std::unique_ptr<TWRunLoopHandle> ending_; // of a verification that was stopped
};

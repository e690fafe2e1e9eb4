#pragma once

#include "deletion/TWFileDeleter.h"

#include <unordered_map>
#include <vector>

class TWFileDeleteQueueDelegate {
public:
    virtual void fileDeleteQueueProgressed(const std::string& /*message*/) { }

    // Every path has been handed to the deleter, or the queue was stopped, and the last child has ended.
    virtual void fileDeleteQueueDone() { }

protected:
    ~TWFileDeleteQueueDelegate() = default;
};

// Deletes a list of paths one after another through one deleter. A queue is used for one run. Main thread. Destroying
// it, also from within a call to the delegate, ends the running child, and no further call is made.
class TWFileDeleteQueue final : private TWFileDeleterDelegate {
public:
    enum class Announcing { EveryPath, OnlyWhatIsLeft };

    explicit TWFileDeleteQueue(const TWDeletionTools&, Announcing = Announcing::EveryPath);

    void setDelegate(TWFileDeleteQueueDelegate* delegate) { delegate_ = delegate; }
    void setSecureDeleteMode(TWSecureMode mode) { secureDeleteMode_ = mode; }

    // No check of any kind. Duplicates are allowed.
    void addFile(std::string path) { files_.push_back(std::move(path)); }
    void addFilesFromArray(std::vector<std::string> paths);
    std::size_t count() const { return files_.size(); }

    // Starts with the first path, or reports being done at once when there is none. While running it only notes the
    // authorization.
    void deleteFiles(TWAuthorization);

    // True when no path of the list exists any more. Reports each one that does, with the reason before it where one is
    // known, and what the tool had to say of one that is gone. Of a stopped queue the paths that were never started are
    // reported together, as one number.
    bool verify();

    // Ends the running child. Kept on purpose: the queue then goes on with its next path.
    void terminate();

    // Differs on purpose: ends the running child and starts no further path; the usual done call follows.
    void stop();

    bool running() const { return running_; }
    bool stopped() const { return stopped_; }

private:
    void fileDeleterProgressed(const std::string& message) override;
    void fileDeleterDone() override;
    void deleteNextFile();
    void report(const std::string& message);
    bool findWhatIsLeft(std::vector<std::string>& lines) const;

    const std::shared_ptr<const int> life_
        = std::make_shared<const int>(0); // to notice being destroyed by the delegate
    const TWFileSystem& fileSystem_;
    const Announcing announcing_;
    TWFileDeleter fileDeleter_;
    TWFileDeleteQueueDelegate* delegate_ = nullptr;
    TWSecureMode secureDeleteMode_ = TWPlainDelete;
    TWAuthorization authorization_ = TWAuthorization::No;
    bool running_ = false;
    bool stopped_ = false;
    std::size_t deleteIndex_ = 0; // of the next path to start
    std::vector<std::string> files_;
    // By index, of the few paths that have one.
    std::unordered_map<std::size_t, std::string> problems_; // said when the path is still there
    std::unordered_map<std::size_t, std::string> notices_; // said when it is gone
};

#pragma once

#include "deletion/TWDeletionGuard.h"
#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"

#include <cstdint>
#include <memory>
#include <string>

// What every deleter and queue works with.
struct TWDeletionTools {
    TWRunLoop& runLoop;
    TWProcessLauncher& launcher;
    const TWFileSystem& fileSystem;
    const TWDeletionGuard& guard;
    const TWPlaces& places;
};

// How a path is deleted: -1 plainly, 0 after one overwriting pass, 1 after seven, 2 after thirty-five.
using TWSecureMode = std::int32_t;
inline constexpr TWSecureMode TWPlainDelete = -1;

enum class TWWaiting { Asynchronously, UntilDone };
enum class TWAuthorization { No, Yes };

class TWFileDeleterDelegate {
public:
    virtual void fileDeleterProgressed(const std::string& /*message*/) { }

    // The deletion tool has ended, however it did. Whether the path is gone is a question to the file system.
    virtual void fileDeleterDone() { }

protected:
    ~TWFileDeleterDelegate() = default;
};

// Deletes one file or folder at a time by running /bin/rm or our srm as a child process. The only place in the system
// that removes files of the user. Main thread. Destroying it ends the child.
class TWFileDeleter final {
public:
    explicit TWFileDeleter(const TWDeletionTools&);

    void setDelegate(TWFileDeleterDelegate* delegate) { delegate_ = delegate; }
    TWFileDeleterDelegate* delegate() const { return delegate_; }

    // The mode's label: "Delete", "One-pass secure delete" and so on, "" for a mode that is none of the four, and ""
    // when a deletion is going on already. The path is absolute. A path that the guard refuses is treated as one that
    // the tool could not delete. With UntilDone the run loop is turned until the child has ended and the delegate has
    // been told.
    std::string deleteFile(const std::string& path, TWSecureMode, TWWaiting, TWAuthorization);

    // Ends the running child; the done call follows as for any other end. Nothing when none runs.
    void terminate();

    bool deleting() const { return deleting_; }

    // Why the latest deletion may have failed, one line for the user: the guard's refusal, a tool that could not be
    // started or was killed, its own first line. "" when nothing is known.
    const std::string& problem() const { return problem_; }

    // What the tool had to say although it ended well: that a file with several names was not overwritten. "" usually.
    const std::string& notice() const { return notice_; }

private:
    std::string deleteFileWithoutAuthorization(const std::string& path, TWSecureMode, TWWaiting);
    void doneRunning(const TWTermination&);
    void finish();

    const std::shared_ptr<const int> life_
        = std::make_shared<const int>(0); // to notice being destroyed by the delegate
    TWDeletionTools tools_;
    TWFileDeleterDelegate* delegate_ = nullptr;
    bool deleting_ = false;
    std::string problem_;
    std::string notice_;
    std::string launchPath_;
    std::unique_ptr<TWChildProcess> task_;
    std::unique_ptr<TWRunLoopHandle> refusal_;
    std::unique_ptr<TWRunLoopHandle> patience_; // for a child that does not listen to terminate()
};

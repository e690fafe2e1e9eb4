#pragma once

#include "deletion/TWDeletionGuard.h"
#include "deletion/TWDeletionTarget.h"
#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"

#include <cstdint>
#include <vector>

// What every deleter and queue works with.
struct TWDeletionTools {
    TWRunLoop& runLoop;
    TWProcessLauncher& launcher;
    const TWFileSystem& fileSystem;
    TWDeletionGuard& guard;
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

// How the latest deletion went, as far as the tool and its launch tell. Lines are for the user.
struct TWDeletionReport {
    std::vector<std::string> problems; // why the path may still be there: a refusal, a tool that failed or was killed
    std::vector<std::string> notices; // what the tool had to say although nothing failed
    bool toolSucceeded = false; // the tool ran to its end and reported no failure
};

// Deletes one file or folder at a time by running /bin/rm or our srm as a child process. It is the only place in the
// system that removes files of the user. Main thread. Destroying it ends the child.
class TWFileDeleter final {
public:
    explicit TWFileDeleter(const TWDeletionTools&);

    void setDelegate(TWFileDeleterDelegate* delegate) { delegate_ = delegate; }
    TWFileDeleterDelegate* delegate() const { return delegate_; }

    // Starts a deletion and returns the mode's label: "Delete", "One-pass secure delete" and so on, or "" for a mode
    // that is none of the four. If a deletion is going on already, returns "" and does nothing else. With UntilDone the
    // event loop is turned until the child has ended and the delegate has been told.
    //
    // Differs on purpose: the child starts inside the parent folder that the target names, compared by device and
    // inode, and gets "./NAME" in the place of the path. If the folder is another one by now, or the guard refuses the
    // path, no child is started; the delegate is told on a later turn as after any other deletion.
    std::string deleteFile(const TWDeletionTarget&, TWSecureMode, TWWaiting, TWAuthorization);

    // Ends the running child; the done call follows as for any other end. Does nothing if none runs.
    void terminate();

    bool deleting() const { return deleting_; }

    const TWDeletionReport& report() const { return report_; }

private:
    std::string deleteFileWithoutAuthorization(const TWDeletionTarget&, TWSecureMode, TWWaiting);
    std::unique_ptr<TWHeldFolder> openFolder(const TWDeletionTarget&, std::string& problem) const;
    void launch(const TWHeldFolder&, const std::string& name, TWSecureMode);
    void doneRunning(const TWTermination&);
    void finish();

    const std::shared_ptr<const int> life_
        = std::make_shared<const int>(0); // tells whether the delegate destroyed this
    TWDeletionTools tools_;
    TWFileDeleterDelegate* delegate_ = nullptr;
    bool deleting_ = false;
    TWDeletionReport report_;
    std::string launchPath_;
    std::unique_ptr<TWChildProcess> task_;
    std::unique_ptr<TWRunLoopHandle> refusal_;
    std::unique_ptr<TWRunLoopHandle> patience_; // for a child that ignores terminate()
};

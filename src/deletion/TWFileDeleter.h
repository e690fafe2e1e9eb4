#pragma once

#include "deletion/TWDeletionGuard.h"
#include "deletion/TWDeletionTarget.h"
#include "deletion/TWPreviewCheck.h"
#include "platform/TWBackgroundStream.h"
#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"
#include "support/TWReportLine.h"

#include <cstdint>
#include <vector>

// What every deleter and queue needs.
struct TWDeletionTools {
    TWRunLoop& runLoop;
    TWProcessLauncher& launcher;
    const TWFileSystem& fileSystem;
    TWDeletionGuard& guard;
    const TWPlaces& places;
};

// How a path is deleted: -1 without overwriting, 0 after one overwriting pass, 1 after seven, 2 after thirty-five.
using TWSecureMode = std::int32_t;
inline constexpr TWSecureMode TWPlainDelete = -1;

// The one of two modes that overwrites more often.
TWSecureMode TWStrongerMode(TWSecureMode, TWSecureMode);

enum class TWWaiting { Asynchronously, UntilDone };
enum class TWAuthorization { No, Yes };

class TWFileDeleterDelegate {
public:
    virtual void fileDeleterProgressed(const std::string& /*message*/) { }

    // The deletion tool has ended, successfully or not. Only the file system can tell whether the path is gone.
    virtual void fileDeleterDone() { }

protected:
    ~TWFileDeleterDelegate() = default;
};

// How the latest deletion went, according to the tool and its launch. The lines are for the user.
struct TWDeletionReport {
    std::vector<TWReportLine> problems; // why the path may still exist: a refusal, or a tool that failed or was killed
    std::vector<TWReportLine> notices; // what the tool reported although nothing failed
    bool toolSucceeded = false; // the tool ran to its end and reported no failure
    bool missing = false; // nothing was there just before the tool was started
};

// Deletes one file or folder at a time by running rm or our srm as a child process. It is the only class that removes
// the user's files. Main thread. Destroying it ends the child.
class TWFileDeleter final {
public:
    explicit TWFileDeleter(const TWDeletionTools&);

    void setDelegate(TWFileDeleterDelegate* delegate) { delegate_ = delegate; }
    TWFileDeleterDelegate* delegate() const { return delegate_; }

    // From now on deletes only what is still as its target saw it; nullptr ends that. All deleters of a run share one
    // check.
    void setPreviewCheck(std::shared_ptr<TWPreviewCheck> check) { previewCheck_ = std::move(check); }

    // Starts a deletion and returns the mode's label: "Delete", "One-pass secure delete" and so on, or "" for a mode
    // that is none of the four. If a deletion is already going on, only returns "". With UntilDone it runs the event
    // loop until the child has ended and the delegate has been told.
    //
    // Differs on purpose: the child starts inside the parent folder that the target names, which is compared by device
    // and inode, and gets "./NAME" instead of the path. If that folder has been replaced in the meantime or the guard
    // refuses the path, no child is started; the delegate is told on a later turn, as after any other deletion. If the
    // guard has to know what lies below the path, that is searched in the background before the child is started. With
    // a preview check, a folder is compared there with what the preview found in it.
    std::string deleteFile(const TWDeletionTarget&, TWSecureMode, TWWaiting, TWAuthorization);

    // Ends the running child, or the background work before it; fileDeleterDone() follows as usual. Otherwise does
    // nothing.
    void terminate();

    bool deleting() const { return deleting_; }

    const TWDeletionReport& report() const { return report_; }

private:
    // A target that the rules permit, as far as can be told without looking below it.
    struct Opened {
        std::unique_ptr<TWHeldFolder> folder; // its parent folder
        std::shared_ptr<const TWDeletionRules> rules;
        TWDeletionRules::Folder judged;
        TWFileLook look;
    };

    std::string deleteFileWithoutAuthorization(const TWDeletionTarget&, TWSecureMode, TWWaiting);
    std::string_view changeSincePreview(const TWFileLook&) const;
    void begin();
    bool isSearched(const Opened&) const;
    std::optional<Opened> openFolder(TWReportLine& problem);
    void prepare(std::shared_ptr<const TWDeletionRules>);
    void search(const Opened&);
    void searched(const TWObjection&);
    bool mustCompare(const TWFileLook&) const;
    void compare();
    void compared(const TWTreeSizes&);
    void refuse(TWReportLine problem);
    void launch(const TWHeldFolder&, const std::string& name, TWSecureMode);
    void noteOwnDeletion();
    void doneRunning(const TWTermination&);
    void finish();

    const std::shared_ptr<const int> life_
        = std::make_shared<const int>(0); // expires if the delegate destroys this object
    TWDeletionTools tools_;
    TWFileDeleterDelegate* delegate_ = nullptr;
    bool deleting_ = false;
    TWDeletionTarget target_; // while deleting
    TWSecureMode mode_ = TWPlainDelete;
    TWDeletionReport report_;
    std::shared_ptr<TWPreviewCheck> previewCheck_;
    std::unique_ptr<TWBackgroundStream<TWTreeSizes>> comparing_; // the target with what the preview found in it
    bool isCompared_ = false; // the target is as the preview found it
    std::string launchPath_;
    std::unique_ptr<TWBackgroundStream<TWObjection>> searching_; // for kept paths, or below the target
    std::shared_ptr<const TWDeletionRules> searchedBy_; // the rules that the latest search asked
    TWFileIdentity searchedFolder_; // in the latest search
    std::unique_ptr<TWChildProcess> task_;
    std::unique_ptr<TWRunLoopHandle> refusal_;
    std::unique_ptr<TWRunLoopHandle> patience_; // for a child that ignores terminate()
};

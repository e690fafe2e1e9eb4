#pragma once

#include "platform/TWApplications.h"
#include "platform/TWFileSystem.h"
#include "platform/TWFolderWatch.h"
#include "platform/TWHandover.h"
#include "platform/TWLock.h"
#include "platform/TWLogSources.h"
#include "platform/TWMountTable.h"
#include "platform/TWOpenFiles.h"
#include "platform/TWOwnFiles.h"
#include "platform/TWPlaces.h"
#include "platform/TWPreferenceFiles.h"
#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"
#include "platform/TWVolumes.h"
#include "platform/TWWorkspace.h"

// The operating system that Tidewell runs on. Makes the implementations of the other seams and answers what only the
// system knows. Main thread.
class TWHost {
public:
    virtual ~TWHost() = default;

    // Must be called first in main(). Makes sure that the standard descriptors are open, that writing to a closed pipe
    // or beyond the limit on file sizes fails instead of ending the program, and that the exit status of children can
    // be read.
    virtual void prepareProcess() const = 0;

    // One line if the places cannot be told with certainty, else "". Nothing may be opened or written then.
    virtual std::string problemOfPlaces() const = 0;

    virtual TWPlaces places() const = 0;

    // The same places below root, which must be a real path. Ignores the environment.
    virtual TWPlaces sandboxPlaces(const std::string& root) const = 0;

    // These live as long as the host.
    virtual const TWFileSystem& fileSystem() const = 0;
    virtual const TWOwnFiles& ownFiles() const = 0;
    virtual const TWPreferenceFiles& preferenceFiles() const = 0;
    virtual const TWFolderWatcher& folderWatcher() const = 0;
    virtual const TWLogSources& logSources() const = 0;
    virtual const TWOpenFiles& openFiles() const = 0;

    virtual std::unique_ptr<TWProcessLauncher> makeLauncher(TWRunLoop&) const = 0;
    virtual std::unique_ptr<TWMountTable> makeMountTable() const = 0;
    virtual std::unique_ptr<TWLocks> makeLocks() const = 0;

    // The host must outlive these.
    virtual std::unique_ptr<TWApplications> makeApplications(const TWPlaces&) const = 0;
    virtual std::unique_ptr<TWWorkspace> makeWorkspace(const TWPlaces&) const = 0;

    virtual std::unique_ptr<TWVolumes> makeVolumes(const TWPlaces&) const = 0;

    // Connects the window and the commands that work on the lists in dataFolder.
    virtual std::unique_ptr<TWHandover> makeHandover(const TWPlaces&, const std::string& dataFolder) const = 0;

    // From now on the signals that ask the program to end (SIGINT, SIGTERM, SIGHUP) wait for whenToldToEnd(). Must be
    // called before the first thread starts. Signals that were ignored when the program started, as under nohup, stay
    // ignored.
    virtual void holdEndRequests() const = 0;

    // Calls the function for each such signal. If the run loop does not turn for five seconds after one, the process
    // ends with status 130.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> whenToldToEnd(TWRunLoop&, std::function<void()>) const = 0;

    // Creates an empty folder with a unique name in the folder for temporary files. On failure returns nothing and sets
    // error to the errno.
    virtual std::optional<std::string> makeTemporaryFolder(int& error) const = 0;

    virtual bool hasDisplay() const = 0;

    // Replaces this process with another program (exec), given the arguments of main(). Returns only on failure, with
    // the errno.
    virtual int becomeProgram(const std::string& path, char** arguments) const = 0;
};

// Makes the host of the system that this program was built for.
std::unique_ptr<TWHost> TWMakeHost();

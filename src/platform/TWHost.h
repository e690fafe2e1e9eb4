#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWHandover.h"
#include "platform/TWLock.h"
#include "platform/TWMountTable.h"
#include "platform/TWOwnFiles.h"
#include "platform/TWPlaces.h"
#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"

// The system that Tidewell runs on. It makes the bodies of the other seams and answers what only the system knows. Main
// thread.
class TWHost {
public:
    virtual ~TWHost() = default;

    // The first thing in main(): makes sure that the standard descriptors are open, and that writing to a closed pipe
    // is an error and does not end the program.
    virtual void prepareProcess() const = 0;

    virtual TWPlaces places() const = 0;

    // The same world below root, a real path. Nothing of the environment is used.
    virtual TWPlaces sandboxPlaces(const std::string& root) const = 0;

    // Both live as long as the host.
    virtual const TWFileSystem& fileSystem() const = 0;
    virtual const TWOwnFiles& ownFiles() const = 0;

    virtual std::unique_ptr<TWProcessLauncher> makeLauncher(TWRunLoop&) const = 0;
    virtual std::unique_ptr<TWMountTable> makeMountTable() const = 0;
    virtual std::unique_ptr<TWLocks> makeLocks() const = 0;

    // For the window and the commands that work on the lists in dataFolder.
    virtual std::unique_ptr<TWHandover> makeHandover(const TWPlaces&, const std::string& dataFolder) const = 0;

    // From now on a request to end (an interrupt, a polite kill, the end of the terminal) waits for whenToldToEnd().
    // Called before the first thread is started. What the program was told to ignore at its start stays ignored.
    virtual void holdEndRequests() const = 0;

    // Calls for each request to end.
    [[nodiscard]] virtual std::unique_ptr<TWRunLoopHandle> whenToldToEnd(TWRunLoop&, std::function<void()>) const = 0;

    // Creates an empty folder of a new name in the folder for temporary files. On failure returns nothing and sets
    // error to the errno.
    virtual std::optional<std::string> makeTemporaryFolder(int& error) const = 0;

    virtual bool hasDisplay() const = 0;

    // Continues as another program with the arguments of main(). Returns only on failure, with the errno.
    virtual int becomeProgram(const std::string& path, char** arguments) const = 0;
};

// The host that this program was built for.
std::unique_ptr<TWHost> TWMakeHost();

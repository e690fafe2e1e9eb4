#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWHandover.h"
#include "platform/TWHandoverMessage.h"
#include "platform/posix/TWDescriptor.h"

#include <chrono>
#include <list>

// Hands over through a Unix socket that only this user can reach. The socket is in the data folder or, if that cannot
// hold one (its path is too long, its file system has no sockets, others can write to it), in the session's runtime
// folder. A socket is used only if it belongs to this user and no other user could have put it there. Both ends check
// that the other process runs as this user.
class TWSocketHandover final : public TWHandover {
public:
    struct Setup {
        const TWFileSystem& fileSystem;
        std::string dataFolder;
        std::string sandboxRoot; // "" outside a sandbox
        std::string runtimeFolder; // "" when the session has none
        bool (*peerIsThisUser)(int socket); // asks the system about the process at the other end
        std::chrono::milliseconds patience = std::chrono::seconds(10); // how long a command waits for the window
    };

    explicit TWSocketHandover(Setup);
    ~TWSocketHandover();

    bool listen(TWRunLoop&, CarryOut) override;
    std::optional<TWCommandResult> handOver(
        const std::vector<std::string>& words, const std::string& workingFolder) const override;

    // The paths at which the window may listen, in the order in which they are tried. Empty while there is no data
    // folder.
    std::vector<std::string> socketPaths() const;

private:
    class Client;

    // A connection to a window of this user. If a window listens but too many commands are waiting for it already, the
    // socket is closed.
    struct Connection {
        TWDescriptor socket = TWDescriptor();
        bool windowListens = false;
    };

    TWHandoverMessage::Fields address() const;
    Connection connectTo(const std::string& path) const;
    Connection connectToWindow() const;
    bool listenAt(const std::string& path);
    void acceptClients(TWRunLoop&);
    TWCommandResult answer(const TWHandoverMessage::Fields& request) const;

    const Setup setup_;
    CarryOut carryOut_;
    TWDescriptor listener_;
    std::string listenerPath_;
    TWFileIdentity listenerIdentity_;
    std::unique_ptr<TWRunLoopHandle> watch_;
    std::list<std::unique_ptr<Client>> clients_; // each removes itself
};

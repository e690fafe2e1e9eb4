#include "platform/posix/TWSocketHandover.h"

#include "support/TWPath.h"
#include "support/TWText.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto OtherLists
    = "The open Tidewell window works on other lists than this command: on those in \"%@\". Nothing "
      "was changed. Please close the window, then try again.\n";
constexpr auto OtherVersion = "The open Tidewell window is of another version than this command. Nothing was changed. "
                              "Please close the window, then try again.\n";
constexpr auto TooLong
    = "The command is too long to be handed to the open Tidewell window. Nothing was changed. Please "
      "close the window, then try again.\n";
constexpr auto NotReached
    = "The open Tidewell window does not answer. Nothing was changed. Please end the window, then "
      "try again.\n";
constexpr auto Silent
    = "The open Tidewell window did not answer, so it is not known whether the command was carried out. "
      "Please end the window, look at the lists, then try again.\n";
constexpr auto AnswerTooLong = "The command was carried out, but its output is too long to be shown.\n";
constexpr auto NoAnswer
    = "The Tidewell window ended before it had answered. Please look whether the command was carried out.\n";

// The first field of every request, so that programs of different versions do not talk to each other.
constexpr auto Protocol = "Tidewell handover 1";
constexpr std::size_t AnswerFields = 3;

// How long the window waits for a complete message, and for the command to take the answer.
constexpr auto Patience = 5000ms;
constexpr auto BetweenTries = 10ms;
constexpr std::size_t PieceSize = 65536;
constexpr int WaitingClients = 16;

// A longer path would be truncated.
bool fitsSocket(const std::string& path)
{
    return !path.empty() && path.size() < sizeof(sockaddr_un::sun_path);
}

sockaddr_un addressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
}

// True if only this user and root can create entries in the folder.
bool isPrivate(const std::string& folder)
{
    struct stat found;
    return stat(folder.c_str(), &found) == 0 && S_ISDIR(found.st_mode) && (found.st_mode & (S_IWGRP | S_IWOTH)) == 0
        && (found.st_uid == geteuid() || found.st_uid == 0);
}

// True for a socket that belongs to this user, but not for a symbolic link to one.
bool isOurSocket(const std::string& path)
{
    struct stat found;
    return lstat(path.c_str(), &found) == 0 && S_ISSOCK(found.st_mode) && found.st_uid == geteuid();
}

// Makes the descriptor non-blocking and keeps child processes from inheriting it.
bool prepare(int descriptor)
{
    return fcntl(descriptor, F_SETFD, FD_CLOEXEC) == 0 && fcntl(descriptor, F_SETFL, O_NONBLOCK) == 0;
}

TWDescriptor makeSocket()
{
    TWDescriptor made(socket(AF_UNIX, SOCK_STREAM, 0));
    return made.isOpen() && prepare(made.get()) ? std::move(made) : TWDescriptor();
}

// Waits for the events of poll(). Returns false if they have not come by the deadline.
bool wait(int socket, short events, Clock::time_point deadline)
{
    pollfd polled{ socket, events, 0 };
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        const int ready = left > 0 ? poll(&polled, 1, static_cast<int>(left)) : 0;
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

// True if the other end has closed the connection.
bool hasHungUp(int socket)
{
    pollfd polled{ socket, 0, 0 };
    return poll(&polled, 1, 0) > 0;
}

bool isTransient(int error)
{
    return error == EAGAIN || error == EINTR;
}

enum class Transfer { Done, Late, Broken };

Transfer sendAll(int socket, std::string_view bytes, Clock::time_point deadline)
{
    while (!bytes.empty()) {
        if (!wait(socket, POLLOUT, deadline))
            return Transfer::Late;
        const auto sent = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent < 0 && !isTransient(errno))
            return Transfer::Broken;
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
    }
    return Transfer::Done;
}

// Waits for one complete message. Broken if the other end closes the connection first.
Transfer receiveAll(int socket, TWHandoverMessage::Fields& fields, Clock::time_point deadline)
{
    std::string received;
    std::vector<char> piece(PieceSize);
    for (auto state = TWHandoverMessage::State::Incomplete; state != TWHandoverMessage::State::Complete;) {
        if (!wait(socket, POLLIN, deadline))
            return Transfer::Late;
        const auto length = recv(socket, piece.data(), piece.size(), 0);
        if (length < 0 && isTransient(errno))
            continue;
        if (length <= 0)
            return Transfer::Broken;
        received.append(piece.data(), static_cast<std::size_t>(length));
        state = TWHandoverMessage::unpack(received, fields);
        if (state == TWHandoverMessage::State::Broken)
            return Transfer::Broken;
    }
    return Transfer::Done;
}

// Sends the request and waits for the answer. silent is what to say if the window got it but does not answer.
TWCommandResult exchange(int socket, std::string_view request, const char* silent, Clock::time_point deadline)
{
    const auto sent = sendAll(socket, request, deadline);
    if (sent == Transfer::Late)
        return { TWStatus::NothingRun, "", NotReached };
    TWHandoverMessage::Fields answer;
    const auto received = sent == Transfer::Done ? receiveAll(socket, answer, deadline) : sent;
    if (received == Transfer::Late)
        return { TWStatus::NothingRun, "", silent };
    if (received == Transfer::Broken || answer.size() != AnswerFields)
        return { TWStatus::Failure, "", NoAnswer };
    int status = TWStatus::Failure;
    std::from_chars(answer[0].data(), answer[0].data() + answer[0].size(), status);
    return { status, answer[1], answer[2] };
}

}

// A command that has connected to the window. Receives its message and sends the answer without blocking the event
// loop.
class TWSocketHandover::Client final {
public:
    Client(TWSocketHandover& owner, TWRunLoop& runLoop, TWDescriptor socket)
        : owner_(owner)
        , runLoop_(runLoop)
        , socket_(std::move(socket))
        , watch_(runLoop.whenReadable(socket_.get(), [this] { receivePiece(); }))
        , deadline_(runLoop.after(Patience, [this] { leave(); }))
    {
    }

private:
    // Reads one piece, so that a long message does not block the event loop.
    void receivePiece()
    {
        char piece[PieceSize];
        const auto length = recv(socket_.get(), piece, sizeof piece, 0);
        if (length < 0 && isTransient(errno))
            return;
        received_.append(piece, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
        TWHandoverMessage::Fields request;
        const auto state = TWHandoverMessage::unpack(received_, request);
        const bool complete = state == TWHandoverMessage::State::Complete;
        // A command that has hung up no longer waits, and has told the user so.
        if (length <= 0 || state == TWHandoverMessage::State::Broken || (complete && hasHungUp(socket_.get())))
            leave();
        else if (complete)
            answer(request);
    }

    void answer(const TWHandoverMessage::Fields& request)
    {
        watch_.reset();
        const auto result = owner_.answer(request);
        deadline_ = runLoop_.after(Patience, [this] { leave(); });
        const auto status = std::to_string(result.status);
        answer_ = TWHandoverMessage::pack({ status, result.out, result.err })
                      .value_or(TWHandoverMessage::pack({ status, "", AnswerTooLong }).value_or(""));
        retry_ = runLoop_.every(BetweenTries, [this] { sendPiece(); });
        sendPiece();
    }

    void sendPiece()
    {
        const auto sent = send(socket_.get(), answer_.data(), answer_.size(), MSG_NOSIGNAL);
        if (sent < 0 && isTransient(errno))
            return;
        answer_.erase(0, static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
        if (sent < 0 || answer_.empty())
            leave();
    }

    // Destroys this object.
    void leave()
    {
        owner_.clients_.remove_if([this](const auto& client) { return client.get() == this; });
    }

    TWSocketHandover& owner_;
    TWRunLoop& runLoop_;
    const TWDescriptor socket_;
    std::string received_;
    std::string answer_; // the part not sent yet
    std::unique_ptr<TWRunLoopHandle> watch_;
    std::unique_ptr<TWRunLoopHandle> deadline_;
    std::unique_ptr<TWRunLoopHandle> retry_;
};

TWSocketHandover::TWSocketHandover(Setup setup)
    : setup_(std::move(setup))
{
}

TWSocketHandover::~TWSocketHandover()
{
    const auto look = setup_.fileSystem.look(listenerPath_);
    if (listener_.isOpen() && look.isThere() && look.facts.identity == listenerIdentity_)
        unlink(listenerPath_.c_str());
}

std::vector<std::string> TWSocketHandover::socketPaths() const
{
    const auto look = setup_.fileSystem.look(setup_.dataFolder, TWLinkAtEnd::Follow);
    if (!look.isFolder())
        return {};
    std::vector<std::string> paths{ setup_.dataFolder + "/.window.socket" };
    char name[80];
    std::snprintf(name, sizeof name, "/tidewell-%llx-%llx.socket",
        static_cast<unsigned long long>(look.facts.identity.device),
        static_cast<unsigned long long>(look.facts.identity.inode));
    if (!setup_.runtimeFolder.empty())
        paths.push_back(setup_.runtimeFolder + name);
    return paths;
}

// Identifies the lists that this process works on. Determined anew each time, because the folder may have been
// replaced.
TWHandoverMessage::Fields TWSocketHandover::address() const
{
    const auto real = setup_.fileSystem.realPath(setup_.dataFolder, TWLinkAtEnd::Follow);
    const auto identity = setup_.fileSystem.look(setup_.dataFolder, TWLinkAtEnd::Follow).facts.identity;
    return { Protocol, real.value_or(""), std::to_string(identity.device), std::to_string(identity.inode),
        setup_.sandboxRoot };
}

TWSocketHandover::Connection TWSocketHandover::connectTo(const std::string& path) const
{
    if (!fitsSocket(path) || !isPrivate(std::string(TWPath::parent(path))) || !isOurSocket(path))
        return {};
    auto socket = makeSocket();
    const auto address = addressOf(path);
    int result = -1;
    do
        result = connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    while (result != 0 && errno == EINTR);
    if (result != 0)
        return { TWDescriptor(), errno == EAGAIN };
    const bool trusted = setup_.peerIsThisUser(socket.get());
    return { trusted ? std::move(socket) : TWDescriptor(), trusted };
}

TWSocketHandover::Connection TWSocketHandover::connectToWindow() const
{
    for (const auto& path : socketPaths()) {
        if (auto connection = connectTo(path); connection.windowListens)
            return connection;
    }
    return {};
}

bool TWSocketHandover::listen(TWRunLoop& runLoop, CarryOut carryOut)
{
    carryOut_ = std::move(carryOut);
    if (connectToWindow().windowListens)
        return false;
    const auto paths = socketPaths();
    if (!std::any_of(paths.begin(), paths.end(), [this](const auto& path) { return listenAt(path); }))
        return false;
    watch_ = runLoop.whenReadable(listener_.get(), [this, &runLoop] { acceptClients(runLoop); });
    return true;
}

bool TWSocketHandover::listenAt(const std::string& path)
{
    if (!fitsSocket(path) || !isPrivate(std::string(TWPath::parent(path))))
        return false;
    if (isOurSocket(path))
        unlink(path.c_str()); // left behind by a window that was killed
    auto socket = makeSocket();
    const auto address = addressOf(path);
    // Between bind() and chmod() others may have permission to connect, but nobody can connect before listen().
    if (bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return false;
    listenerPath_ = path;
    listenerIdentity_ = setup_.fileSystem.look(path).facts.identity;
    if (chmod(path.c_str(), S_IRUSR | S_IWUSR) != 0 || ::listen(socket.get(), WaitingClients) != 0) {
        unlink(path.c_str());
        return false;
    }
    listener_ = std::move(socket);
    return true;
}

void TWSocketHandover::acceptClients(TWRunLoop& runLoop)
{
    for (;;) {
        TWDescriptor accepted(accept(listener_.get(), nullptr, nullptr));
        if (!accepted.isOpen())
            return;
        if (prepare(accepted.get()) && setup_.peerIsThisUser(accepted.get()))
            clients_.push_back(std::make_unique<Client>(*this, runLoop, std::move(accepted)));
    }
}

TWCommandResult TWSocketHandover::answer(const TWHandoverMessage::Fields& request) const
{
    const auto own = address();
    if (request.empty() || request.front() != Protocol)
        return { TWStatus::NothingRun, "", OtherVersion };
    if (request.size() <= own.size() || !std::equal(own.begin(), own.end(), request.begin()))
        return { TWStatus::NothingRun, "", TWText::fill(OtherLists, { TWText::oneLine(setup_.dataFolder) }) };
    const auto workingFolder = request.begin() + static_cast<std::ptrdiff_t>(own.size());
    return carryOut_({ workingFolder + 1, request.end() }, *workingFolder);
}

std::optional<TWCommandResult> TWSocketHandover::handOver(
    const std::vector<std::string>& words, const std::string& workingFolder) const
{
    const auto deadline = Clock::now() + setup_.patience;
    auto connection = connectToWindow();
    while (connection.windowListens && !connection.socket.isOpen() && Clock::now() < deadline) {
        std::this_thread::sleep_for(BetweenTries);
        connection = connectToWindow();
    }
    if (!connection.windowListens)
        return std::nullopt;
    auto request = address();
    request.push_back(workingFolder);
    request.insert(request.end(), words.begin(), words.end());
    const auto message = TWHandoverMessage::pack(request);
    if (!message)
        return TWCommandResult{ TWStatus::NothingRun, "", TooLong };
    if (!connection.socket.isOpen())
        return TWCommandResult{ TWStatus::NothingRun, "", NotReached };
    return exchange(connection.socket.get(), *message, words.empty() ? NotReached : Silent, deadline);
}

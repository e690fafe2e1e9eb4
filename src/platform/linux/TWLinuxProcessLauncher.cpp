#include "platform/linux/TWLinuxProcessLauncher.h"

#include "platform/linux/TWLinuxPidfd.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;

constexpr std::size_t KeptOutput = 4096;

// How long an abandoned child may take to end after SIGTERM before it is killed.
constexpr auto Patience = 100ms;

// The low bit of an epoll tag tells a child's output pipe from its pidfd.
constexpr std::uint64_t OutputBit = 1;

// Reaps the process if it has ended. Returns true when no zombie is left.
bool collect(pid_t process)
{
    return waitpid(process, nullptr, WNOHANG) != 0;
}

// Where the session's message bus is, for the helper that unmounts volumes.
std::vector<std::string> sessionVariables()
{
    std::vector<std::string> variables;
    for (const auto* name : { "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR" }) {
        if (const char* value = std::getenv(name))
            variables.push_back(std::string(name) + "=" + value);
    }
    return variables;
}

// Descriptors that a child gets. sharedLock is -1 if there is none.
struct Given {
    int folder;
    int output;
    int sharedLock;
};

// Returns 0 or the errno.
int spawn(const std::string& path, const std::vector<std::string>& arguments, const Given& given, pid_t& process)
{
    std::vector<char*> words{ const_cast<char*>(path.c_str()) };
    for (const auto& argument : arguments)
        words.push_back(const_cast<char*>(argument.c_str()));
    words.push_back(nullptr);
    char locale[] = "LC_ALL=C";
    char search[] = "PATH=/usr/bin:/bin:/usr/sbin:/sbin";
    std::vector<char*> environment{ locale, search };
    auto session = sessionVariables();
    for (auto& variable : session)
        environment.push_back(variable.data());
    environment.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, given.output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, given.output, STDERR_FILENO);
    posix_spawn_file_actions_addfchdir_np(&actions, given.folder);
    if (given.sharedLock >= 0) // with equal numbers this lets the child inherit the descriptor
        posix_spawn_file_actions_adddup2(&actions, given.sharedLock, given.sharedLock);

    // A child must not inherit this process's blocked and ignored signals.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes, &signals);
    for (const int signal : { SIGPIPE, SIGXFSZ, SIGINT, SIGTERM, SIGHUP })
        sigaddset(&signals, signal);
    posix_spawnattr_setsigdefault(&attributes, &signals);
    // A process group of its own: Ctrl+C at a terminal must not end the child before Tidewell knows that it is to stop,
    // because Tidewell would go on with the next item.
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);

    const int error = posix_spawn(&process, path.c_str(), &actions, &attributes, words.data(), environment.data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

}

class TWLinuxProcessLauncher::Child final : public TWChildProcess {
public:
    Child(TWLinuxProcessLauncher& launcher, Terminated terminated)
        : launcher_(launcher)
        , identifier_(launcher.nextIdentifier_ += 2)
        , terminated_(std::move(terminated))
    {
        launcher_.children_[identifier_] = this;
    }

    ~Child()
    {
        launcher_.children_.erase(identifier_);
        if (process_ > 0) {
            signal(SIGTERM);
            launcher_.abandon(identifier_, process_, std::move(pidfd_));
        }
    }

    void start(const std::string& path, const std::vector<std::string>& arguments, int folder)
    {
        int error = 0;
        int ends[2] = { -1, -1 };
        if (pipe2(ends, O_CLOEXEC) != 0)
            error = errno;
        outputRead_ = TWDescriptor(ends[0]);
        outputWrite_ = TWDescriptor(ends[1]);
        if (error == 0) {
            fcntl(outputRead_.get(), F_SETFL, O_NONBLOCK);
            const auto lock = launcher_.sharedLock_.lock();
            error = spawn(path, arguments, { folder, outputWrite_.get(), lock ? lock->descriptor() : -1 }, process_);
        }
        if (error == 0)
            error = watchDescriptors();
        if (error != 0)
            failLater(error);
    }

    void terminate() override { signal(SIGTERM); }
    void kill() override { signal(SIGKILL); }

    void drainOutput()
    {
        char buffer[16384];
        for (ssize_t length; (length = read(outputRead_.get(), buffer, sizeof buffer)) > 0;) {
            const auto room = KeptOutput - termination_.output.size();
            termination_.output.append(buffer, std::min(static_cast<std::size_t>(length), room));
        }
    }

    void ended()
    {
        int status = 0;
        const pid_t collected = waitpid(process_, &status, WNOHANG);
        if (collected == 0)
            return;
        if (collected < 0)
            status = W_EXITCODE(0xFF, 0); // lost; must not count as a success
        process_ = -1;
        drainOutput();
        const bool signalled = WIFSIGNALED(status);
        termination_.kind = signalled ? TWTermination::Kind::Signalled : TWTermination::Kind::Exited;
        termination_.code = signalled ? WTERMSIG(status) : WEXITSTATUS(status);
        report();
    }

private:
    int watchDescriptors()
    {
        pidfd_ = TWLinuxOpenProcess(process_);
        if (pidfd_.isOpen() && launcher_.watch(pidfd_.get(), identifier_)
            && launcher_.watch(outputRead_.get(), identifier_ | OutputBit))
            return 0;
        // Without a watch nobody would notice the child's end, so it must not go on.
        const int error = errno;
        ::kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
        process_ = -1;
        return error;
    }

    void failLater(int error)
    {
        closeAll();
        termination_.kind = TWTermination::Kind::NotLaunched;
        termination_.code = error;
        failure_ = launcher_.loop_.after(TWRunLoop::Duration(0), [this] { report(); });
    }

    // The owner usually destroys this object inside the call.
    void report()
    {
        closeAll();
        const auto terminated = std::move(terminated_);
        const auto termination = std::move(termination_);
        terminated(termination);
    }

    void signal(int number) const
    {
        if (process_ > 0)
            TWLinuxSendSignal(pidfd_.get(), number);
    }

    void closeAll()
    {
        pidfd_.close();
        outputRead_.close();
        outputWrite_.close();
    }

    TWLinuxProcessLauncher& launcher_;
    const std::uint64_t identifier_;
    Terminated terminated_;
    TWTermination termination_;
    pid_t process_ = -1;
    TWDescriptor pidfd_;
    TWDescriptor outputRead_;
    TWDescriptor outputWrite_; // kept open, or the pipe's hangup would wake the loop once more at the child's end
    std::unique_ptr<TWRunLoopHandle> failure_;
};

TWLinuxProcessLauncher::TWLinuxProcessLauncher(TWRunLoop& loop)
    : loop_(loop)
    , epoll_(epoll_create1(EPOLL_CLOEXEC))
    , watch_(loop.whenReadable(epoll_.get(), [this] { serveEvents(); }))
{
}

// The program may be about to end, and no tool may go on without it.
TWLinuxProcessLauncher::~TWLinuxProcessLauncher()
{
    collectAbandoned();
    for (const auto& [identifier, child] : abandoned_)
        TWLinuxSendSignal(child.pidfd.get(), SIGKILL);
    collectAbandoned();
}

void TWLinuxProcessLauncher::abandon(std::uint64_t identifier, pid_t process, TWDescriptor pidfd)
{
    auto patience
        = loop_.after(Patience, [this, identifier] { TWLinuxSendSignal(abandoned_[identifier].pidfd.get(), SIGKILL); });
    abandoned_[identifier] = { process, std::move(pidfd), std::move(patience) };
}

void TWLinuxProcessLauncher::collectAbandoned()
{
    const auto end = std::chrono::steady_clock::now() + Patience;
    for (;;) {
        std::erase_if(abandoned_, [](const auto& each) { return collect(each.second.process); });
        if (abandoned_.empty() || std::chrono::steady_clock::now() > end)
            return;
        std::this_thread::sleep_for(1ms);
    }
}

std::unique_ptr<TWChildProcess> TWLinuxProcessLauncher::launch(const std::string& path,
    const std::vector<std::string>& arguments, const TWHeldFolder& workingFolder, Terminated terminated)
{
    auto child = std::make_unique<Child>(*this, std::move(terminated));
    child->start(path, arguments, workingFolder.descriptor());
    return child;
}

bool TWLinuxProcessLauncher::watch(int descriptor, std::uint64_t tag) const
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = tag;
    return epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

void TWLinuxProcessLauncher::serveEvents()
{
    epoll_event events[16];
    const int count = epoll_wait(epoll_.get(), events, 16, 0);
    for (int index = 0; index < count; ++index) {
        const auto tag = events[index].data.u64;
        // An earlier call may have destroyed the child, so each event looks it up again.
        const auto found = children_.find(tag & ~OutputBit);
        if (found == children_.end())
            std::erase_if(
                abandoned_, [tag](const auto& each) { return each.first == tag && collect(each.second.process); });
        else if (tag & OutputBit)
            found->second->drainOutput();
        else
            found->second->ended();
    }
}

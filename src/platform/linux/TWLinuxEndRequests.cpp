#include "platform/linux/TWLinuxEndRequests.h"

#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <system_error>

namespace {

constexpr int StatusOfSignals = 130;

sigset_t endingSignals()
{
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : { SIGINT, SIGTERM, SIGHUP }) {
        struct sigaction action;
        // An ignored signal must not be blocked: the kernel would queue it all the same.
        if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN)
            sigaddset(&ending, signal);
    }
    return ending;
}

}

void TWLinuxEndRequests::hold()
{
    const auto ending = endingSignals();
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
}

TWLinuxEndRequests::TWLinuxEndRequests(TWRunLoop& runLoop, std::function<void()> requested, int patience)
    : patience_(patience)
    , over_(eventfd(0, EFD_CLOEXEC))
{
    const auto ending = endingSignals();
    signals_ = TWDescriptor(signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK));
    watch_ = runLoop.whenReadable(signals_.get(), [this, requested = std::move(requested)] {
        signalfd_siginfo information;
        while (read(signals_.get(), &information, sizeof information) > 0) { }
        ++taken_;
        requested();
    });
    try {
        watcher_ = std::thread([this] { watchTheMainThread(); });
    } catch (const std::system_error&) { // no thread is available: then nothing ends a process that hangs
    }
}

TWLinuxEndRequests::~TWLinuxEndRequests()
{
    eventfd_write(over_.get(), 1);
    if (watcher_.joinable())
        watcher_.join();
}

// Runs on a thread of its own. What is being deleted by a child process is still deleted.
void TWLinuxEndRequests::watchTheMainThread() const
{
    for (;;) {
        const unsigned before = taken_;
        pollfd either[] = { { over_.get(), POLLIN, 0 }, { signals_.get(), POLLIN, 0 } };
        poll(either, 2, -1);
        // Until the signal is taken, another poll() of its descriptor would return at once.
        if (poll(either, 1, patience_) == 1)
            return;
        pollfd signals{ signals_.get(), POLLIN, 0 };
        if (taken_ == before && poll(&signals, 1, 0) == 1)
            std::_Exit(StatusOfSignals);
    }
}

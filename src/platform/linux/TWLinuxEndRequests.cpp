#include "platform/linux/TWLinuxEndRequests.h"

#include <csignal>
#include <sys/signalfd.h>

namespace {

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

TWLinuxEndRequests::TWLinuxEndRequests(TWRunLoop& runLoop, std::function<void()> requested)
{
    const auto ending = endingSignals();
    signals_ = TWDescriptor(signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK));
    watch_ = runLoop.whenReadable(signals_.get(), [this, requested = std::move(requested)] {
        signalfd_siginfo information;
        while (read(signals_.get(), &information, sizeof information) > 0) { }
        requested();
    });
}

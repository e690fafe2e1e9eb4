#include "TWHeldSignals.h"

namespace {

constexpr int Held[] = { SIGHUP, SIGINT, SIGTERM };

}

TWHeldSignals::TWHeldSignals()
{
    sigemptyset(&signals_);
    for (const int signal : Held)
        sigaddset(&signals_, signal);
    sigprocmask(SIG_BLOCK, &signals_, nullptr);
}

bool TWHeldSignals::pending() const
{
    sigset_t arrived;
    if (sigpending(&arrived) != 0)
        return false;
    for (const int signal : Held) {
        if (sigismember(&arrived, signal) == 1)
            return true;
    }
    return false;
}

void TWHeldSignals::release()
{
    sigprocmask(SIG_UNBLOCK, &signals_, nullptr);
}

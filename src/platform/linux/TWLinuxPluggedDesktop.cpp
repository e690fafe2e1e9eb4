#include "platform/linux/TWLinuxPluggedDesktop.h"

#include "support/TWLog.h"
#include "support/TWText.h"

#include <dlfcn.h>

#include <cstdlib>
#include <system_error>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto NotLoaded = "TWLinuxPluggedDesktop: windows cannot be closed, because \"%@\" could not be loaded (%@).";

constexpr auto Patience = 1s;
constexpr auto PatienceWithLateAnswer = 3s; // before the next question; counted from the one that it answers

bool isSet(const char* variable)
{
    const char* value = std::getenv(variable);
    return value && *value;
}

}

// Stays loaded: the libraries have threads that never end.
void TWLinuxPluggedDesktop::load()
{
    isLoaded_ = true;
    void* library = dlopen(plugIn_.c_str(), RTLD_NOW | RTLD_LOCAL | RTLD_NODELETE);
    const auto make
        = library ? reinterpret_cast<decltype(&TWMakeLinuxDesktop)>(dlsym(library, "TWMakeLinuxDesktop")) : nullptr;
    if (make)
        desktop_.reset(make());
    else
        TWLog::write(TWText::fill(NotLoaded, { plugIn_, dlerror() }));
}

// A thread that waits for ever holds what it works with, and ends with the program.
template <typename Answer>
Answer TWLinuxPluggedDesktop::ask(std::function<Answer(TWLinuxDesktop&)> question)
{
    if (!isLoaded_)
        load();
    const bool isBusy = answered_.valid() && answered_.wait_until(longestWait_) != std::future_status::ready;
    if (!desktop_ || isBusy)
        return std::nullopt;
    longestWait_ = std::chrono::steady_clock::now() + PatienceWithLateAnswer;
    std::promise<Answer> promise;
    std::promise<void> answered;
    auto answer = promise.get_future();
    answered_ = answered.get_future();
    try {
        std::thread([promise = std::move(promise), answered = std::move(answered), question = std::move(question),
                        desktop = desktop_]() mutable {
            auto found = question(*desktop);
            answered.set_value();
            promise.set_value(std::move(found));
        }).detach();
    } catch (const std::system_error&) { // no more threads are to be had
        answered_ = {};
        return std::nullopt;
    }
    return answer.wait_for(Patience) == std::future_status::ready ? answer.get() : std::nullopt;
}

std::optional<std::vector<TWLinuxWindow>> TWLinuxPluggedDesktop::windows()
{
    using Windows = std::vector<TWLinuxWindow>;
    if (!isSet("DISPLAY"))
        return Windows();
    return ask<std::optional<Windows>>([](TWLinuxDesktop& desktop) { return desktop.windows(); });
}

std::optional<bool> TWLinuxPluggedDesktop::closeWindows(const std::set<std::int64_t>& processes)
{
    if (!isSet("DISPLAY"))
        return false;
    return ask<std::optional<bool>>([processes](TWLinuxDesktop& desktop) { return desktop.closeWindows(processes); });
}

std::optional<bool> TWLinuxPluggedDesktop::quitOverBus(const std::set<std::int64_t>& processes)
{
    if (!isSet("DBUS_SESSION_BUS_ADDRESS") && !isSet("XDG_RUNTIME_DIR"))
        return false;
    return ask<std::optional<bool>>([processes](TWLinuxDesktop& desktop) { return desktop.quitOverBus(processes); });
}

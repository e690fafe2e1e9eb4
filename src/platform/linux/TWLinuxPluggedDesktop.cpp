#include "platform/linux/TWLinuxPluggedDesktop.h"

#include "support/TWLog.h"
#include "support/TWText.h"

#include <dlfcn.h>

#include <cstdlib>
#include <system_error>
#include <thread>

namespace {

using namespace std::chrono_literals;

constexpr auto NotLoaded = "TWLinuxPluggedDesktop: the desktop is not asked: \"%@\" could not be loaded (%@).";

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
Answer TWLinuxPluggedDesktop::ask(Patience patience, std::function<Answer(TWLinuxDesktop&)> question)
{
    if (!isLoaded_)
        load();
    const bool isBusy = answered_.valid() && answered_.wait_until(longestWait_) != std::future_status::ready;
    if (!desktop_ || isBusy)
        return std::nullopt;
    longestWait_ = std::chrono::steady_clock::now() + patience.lateAnswer;
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
    return answer.wait_for(patience.answer) == std::future_status::ready ? answer.get() : std::nullopt;
}

std::optional<std::vector<TWLinuxWindow>> TWLinuxPluggedDesktop::windows()
{
    using Windows = std::vector<TWLinuxWindow>;
    if (!isSet("DISPLAY"))
        return Windows();
    return ask<std::optional<Windows>>(UsualPatience, [](TWLinuxDesktop& desktop) { return desktop.windows(); });
}

std::optional<bool> TWLinuxPluggedDesktop::closeWindows(const std::set<std::int64_t>& processes)
{
    if (!isSet("DISPLAY"))
        return false;
    return ask<std::optional<bool>>(
        UsualPatience, [processes](TWLinuxDesktop& desktop) { return desktop.closeWindows(processes); });
}

std::optional<bool> TWLinuxPluggedDesktop::quitOverBus(const std::set<std::int64_t>& processes)
{
    if (!isSet("DBUS_SESSION_BUS_ADDRESS") && !isSet("XDG_RUNTIME_DIR"))
        return false;
    return ask<std::optional<bool>>(
        UsualPatience, [processes](TWLinuxDesktop& desktop) { return desktop.quitOverBus(processes); });
}

std::optional<TWLinuxLocationList> TWLinuxPluggedDesktop::locations(Duration patience)
{
    return ask<std::optional<TWLinuxLocationList>>(
        { patience, 0ms }, [patience](TWLinuxDesktop& desktop) { return desktop.locations(patience); });
}

std::optional<std::string> TWLinuxPluggedDesktop::close(
    const TWLinuxLocation& location, TWLinuxDesktop::Force force, Duration patience)
{
    return ask<std::optional<std::string>>({ patience, 0ms },
        [location, force, patience](TWLinuxDesktop& desktop) { return desktop.close(location, force, patience); });
}

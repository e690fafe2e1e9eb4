#pragma once

#include "platform/linux/TWLinuxDesktop.h"

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>

// Loads the desktop from a plug-in when it is first needed, because its libraries would double the time in which a
// short command starts, and asks it on another thread, so that nobody waits long for a server that hangs. While it owes
// a late answer it is not asked anything else. One thread at a time.
class TWLinuxPluggedDesktop final {
public:
    explicit TWLinuxPluggedDesktop(std::string plugIn)
        : plugIn_(std::move(plugIn))
    {
    }

    // As in TWLinuxDesktop; without a display or a bus the answer is that there is nothing. Return nothing if it has
    // not answered in time or could not be loaded: then nobody knows.
    std::optional<std::vector<TWLinuxWindow>> windows();
    std::optional<bool> closeWindows(const std::set<std::int64_t>& processes);
    std::optional<bool> quitOverBus(const std::set<std::int64_t>& processes);

    // As well, but they do not wait longer than that, not even for a late answer.
    using Duration = std::chrono::milliseconds;
    std::optional<TWLinuxLocationList> locations(Duration patience);
    std::optional<std::string> close(const TWLinuxLocation&, TWLinuxDesktop::Force, Duration patience);

private:
    struct Patience {
        Duration answer;
        Duration lateAnswer; // before the next question; counted from the one that it answers
    };
    static constexpr Patience UsualPatience{ Duration(1000), Duration(3000) };

    template <typename Answer>
    Answer ask(Patience, std::function<Answer(TWLinuxDesktop&)>);
    void load();

    const std::string plugIn_;
    std::shared_ptr<TWLinuxDesktop> desktop_;
    bool isLoaded_ = false; // or could not be
    std::future<void> answered_; // the latest question; ready when the desktop can be asked again
    std::chrono::steady_clock::time_point longestWait_; // for that
};

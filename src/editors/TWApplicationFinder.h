#pragma once

#include "platform/TWApplications.h"
#include "platform/TWBackgroundStream.h"

#include <functional>
#include <memory>

// Reads in the background which applications there are, for a user who chooses some. Main thread.
class TWApplicationFinder final {
public:
    // What is at a path that the user has chosen; see TWApplications::open().
    struct Opened {
        std::optional<TWApplication> application;
        std::string problem;
    };

    TWApplicationFinder(TWRunLoop&, const TWApplications&);

    // All installed ones. A second call takes the place of the first.
    void find(std::function<void(std::vector<TWApplication>)> found);

    // Those at absolute paths, in that order. A second call takes the place of the first.
    void open(std::vector<std::string> paths, std::function<void(std::vector<Opened>)> opened);

    // Cancels both.
    void stop();

private:
    TWRunLoop& runLoop_;
    const TWApplications& applications_;
    std::unique_ptr<TWBackgroundStream<std::vector<TWApplication>>> finding_;
    std::unique_ptr<TWBackgroundStream<std::vector<Opened>>> opening_;
};

#include "editors/TWApplicationFinder.h"

TWApplicationFinder::TWApplicationFinder(TWRunLoop& runLoop, const TWApplications& applications)
    : runLoop_(runLoop)
    , applications_(applications)
{
}

void TWApplicationFinder::find(std::function<void(std::vector<TWApplication>)> found)
{
    finding_ = std::make_unique<TWBackgroundStream<std::vector<TWApplication>>>(
        runLoop_, 1, [&applications = applications_](auto& sink) { sink.put(applications.installed()); },
        std::move(found), [] {});
}

void TWApplicationFinder::open(std::vector<std::string> paths, std::function<void(std::vector<Opened>)> opened)
{
    opening_ = std::make_unique<TWBackgroundStream<std::vector<Opened>>>(
        runLoop_, 1,
        [paths = std::move(paths), &applications = applications_](auto& sink) {
            std::vector<Opened> all;
            for (const auto& path : paths) {
                if (sink.cancellation().cancelled())
                    return;
                Opened each;
                each.application = applications.open(path, each.problem);
                all.push_back(std::move(each));
            }
            sink.put(std::move(all));
        },
        std::move(opened), [] {});
}

void TWApplicationFinder::stop()
{
    finding_.reset();
    opening_.reset();
}

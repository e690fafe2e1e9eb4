// For applications.py: applications_bench LOOKS PATH looks for the running copies of an application once and then again
// and again, ten times a second as a run does, and prints the CPU time of the first look and the median of the later
// ones in milliseconds, and the number of copies.

#include "platform/TWHost.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <thread>

namespace {

double milliseconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
}

double processorTime()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return milliseconds(usage.ru_utime) + milliseconds(usage.ru_stime);
}

}

int main(int count, char** arguments)
{
    if (count != 3)
        return 2;
    const auto host = TWMakeHost();
    const auto workspace = host->makeWorkspace(host->places());
    const auto copies = workspace->runningCopies({ arguments[2] });
    std::vector<double> times;
    std::size_t found = 0;
    for (int looks = std::stoi(arguments[1]); looks > 0; --looks) {
        const auto begun = processorTime();
        const auto running = copies->runningApplications({});
        times.push_back(processorTime() - begun);
        if (!running)
            return 1;
        found = running->size();
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    const auto first = times.front();
    times.erase(times.begin());
    std::sort(times.begin(), times.end());
    std::printf("%f %f %zu\n", first, times[times.size() / 2], found);
    return 0;
}

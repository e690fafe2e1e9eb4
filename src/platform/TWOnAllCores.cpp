#include "platform/TWOnAllCores.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t ShortestRange = 1000; // one system call each takes ten times as long as starting a thread

}

void TWOnAllCores(std::size_t count, const std::function<void(std::size_t begin, std::size_t end)>& work)
{
    const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
    std::size_t begin = 0;
    std::vector<std::jthread> threads; // joined before the return
    for (auto ranges = std::min(cores, count / ShortestRange); ranges > 1; --ranges) {
        const auto end = begin + (count - begin) / ranges;
        try {
            threads.emplace_back(work, begin, end);
        } catch (const std::system_error&) { // no more threads are to be had: slower, but done
            break;
        }
        begin = end;
    }
    work(begin, count);
}

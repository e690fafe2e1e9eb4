#include "platform/TWLock.h"

#include <thread>

using namespace std::chrono_literals;

TWLockResult TWWaitForLock(TWLocks& locks, const std::string& path, std::chrono::milliseconds longest)
{
    const auto end = std::chrono::steady_clock::now() + longest;
    auto result = locks.tryLock(path);
    while (result.heldByAnother && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(20ms);
        result = locks.tryLock(path);
    }
    return result;
}

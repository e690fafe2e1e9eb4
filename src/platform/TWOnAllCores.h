#pragma once

#include <cstddef>
#include <functional>

// Divides the indexes below count into one range per core, calls work(begin, end) for each of them at the same time, on
// several threads, and returns when all calls have returned. A short range is not divided. Any thread.
void TWOnAllCores(std::size_t count, const std::function<void(std::size_t begin, std::size_t end)>& work);

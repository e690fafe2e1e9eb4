#pragma once

#include <cstddef>
#include <functional>
#include <string_view>

// Reading and writing of open files, past interruptions and short results. Any thread.

// Passes the bytes of an open file to take, piece by piece, until it returns false, which is not an error. Returns 0 or
// the errno: EFBIG if there are more bytes than the limit.
int TWReadAll(int file, std::size_t limit, const std::function<bool(std::string_view)>& take);

// Returns 0 or the errno.
int TWWriteAll(int file, std::string_view bytes);

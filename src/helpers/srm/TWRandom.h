#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// A fast generator of random bytes (xoshiro256++), seeded by the system. The bytes must differ each time and must not
// compress, so that no layer below can merge them; they need not be hard to guess. The system's own generator would be
// the slowest part of a pass over a fast disk.
class TWRandom final {
public:
    // Returns false if the system provides no seed; then nothing may be overwritten.
    bool seed();

    // Rounds the length up to a multiple of eight; the buffer must have room for that.
    void fill(unsigned char* buffer, std::size_t length);

private:
    std::uint64_t next();

    std::array<std::uint64_t, 4> state_ = {};
};

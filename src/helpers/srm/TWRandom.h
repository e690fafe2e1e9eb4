#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// A fast generator of random bytes, seeded by the system. Data to overwrite with must be new each time and must not
// compress, so that no layer below can fold it; nobody gains anything from guessing it. The system's own generator
// would be the slowest part of a pass over a fast disk, this one is not. The method is xoshiro256++.
class TWRandom final {
public:
    // False when the system gave no seed; then nothing may be overwritten.
    bool seed();

    std::uint64_t next();

    // The length is rounded up to a multiple of eight; the buffer must have room for that.
    void fill(unsigned char* buffer, std::size_t length);

private:
    std::array<std::uint64_t, 4> state_ = {};
};

#include "TWRandom.h"

#include <bit>
#include <cstring>
#include <unistd.h>

bool TWRandom::seed()
{
    return getentropy(state_.data(), sizeof state_) == 0;
}

std::uint64_t TWRandom::next()
{
    const std::uint64_t result = std::rotl(state_[0] + state_[3], 23) + state_[0];
    const std::uint64_t shifted = state_[1] << 17;
    state_[2] ^= state_[0];
    state_[3] ^= state_[1];
    state_[1] ^= state_[2];
    state_[0] ^= state_[3];
    state_[2] ^= shifted;
    state_[3] = std::rotl(state_[3], 45);
    return result;
}

void TWRandom::fill(unsigned char* buffer, std::size_t length)
{
    for (std::size_t at = 0; at < length; at += sizeof(std::uint64_t)) {
        const std::uint64_t word = next();
        std::memcpy(buffer + at, &word, sizeof word);
    }
}

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// The first and the last bytes of a stream of any length: what a preview shows of it.
class TWStreamEnds final {
public:
    static constexpr std::size_t LongestEnd = std::size_t{ 512 } * 1024;

    void append(std::string_view bytes);

    // Bytes that nobody has read.
    void skip(std::uint64_t count);

    // Forgets the last bytes, so that only the first ones are known.
    void dropLast();

    std::uint64_t length() const { return length_; }
    std::string_view first() const { return first_; }
    std::string_view last() const; // "" if the first bytes are all there is
    std::uint64_t lastPlace() const { return length_ - last().size(); }

private:
    std::string first_;
    std::string last_; // up to twice as long as shown, so that it is not moved for each piece
    std::uint64_t length_ = 0;
};

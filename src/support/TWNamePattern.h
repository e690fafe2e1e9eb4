#pragma once

#include <string>
#include <string_view>

// A pattern for one file name. "*" stands for any bytes, "?" for one byte, "[abc]" for one of these bytes, "[a-z]" for
// one of a range and "[!abc]" for any other byte. A "]" right after "[" or "[!" and a "[" that is never closed stand
// for themselves, and so does every other byte. Upper and lower case make a difference. Any thread.
class TWNamePattern final {
public:
    explicit TWNamePattern(std::string text)
        : text_(std::move(text))
    {
    }

    const std::string& text() const { return text_; }

    // Whether it matches the whole name. Names and patterns may hold any bytes.
    bool matches(std::string_view name) const;

    // Whether a set in it can hardly mean what it says: it holds a range that goes backwards or a byte of 0x80 or more,
    // that is part of a character such as an "a" with dots.
    bool hasDoubtfulSet() const;

private:
    std::string text_;
};

#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

// Where a part of a text is, in bytes. Small, because a long list has one for each of its lines.
struct TWTextPart {
    std::uint16_t begin = 0;
    std::uint16_t length = 0;

    // The place in the same text after that many bytes have been put before it. Nothing, a length of 0, stays nothing.
    TWTextPart movedBy(std::size_t bytes) const;

    std::string_view of(std::string_view text) const { return text.substr(begin, length); }
};

// A line for the results and the place in it of the path that it is about, so that nobody has to search the text for
// it. Any thread.
struct TWReportLine {
    // A line that names no path.
    TWReportLine(std::string line) // NOLINT(google-explicit-constructor): most lines are plain texts
        : text(std::move(line))
    {
    }

    // Like TWText::fill(). The value at pathPosition, counted from 0, is the path, in bytes. It is not marked if it is
    // not absolute, or so long that TWTextPart cannot express its place.
    static TWReportLine about(
        std::string_view format, std::initializer_list<std::string_view> values, std::size_t pathPosition = 0);

    std::string text;
    TWTextPart path; // nothing if the line names no path
};

#pragma once

#include <chrono>
#include <cstdint>
#include <string>

// How far a job is. While it plans, items is what has been found so far.
struct TWProgress {
    std::uint64_t items = 0;
    std::uint64_t itemsDone = 0;
    std::uint64_t bytes = 0; // space on disk of the items that have been measured so far
    std::uint64_t bytesDone = 0;
    bool planned = false; // items is final
    bool measured = false; // so is bytes
    bool waits = false; // for other programs: nobody can tell how long
    std::uint64_t records = 0; // of the items; they are deleted after them, and no text counts them
    std::uint64_t recordsDone = 0;

    // From 0 to 1; 0 while it plans. What is left takes about as long as this says: small items cost a child process
    // each, large ones their size.
    double fraction() const;

    // "1,200 found", "41 of 90", "41 of 90, 3.1 of 7.0 GB, about 20 s", "waiting for 3 of 4"; "" if there is nothing to
    // tell. The time since the plan was made gives what is left of it, once it can be told.
    std::string text(std::chrono::milliseconds elapsed) const;
};

// What a run has brought.
struct TWOutcome {
    std::uint64_t gone = 0; // items
    std::uint64_t left = 0;
    std::uint64_t bytes = 0; // space on disk that those took that are gone
    std::uint64_t notStarted = 0; // cleaners whose turn did not come
    bool measured = false; // all of those bytes are counted
    bool stopped = false; // by the user
    std::string others; // sentences about what is no item: "2 applications were quit."

    TWOutcome& operator+=(const TWOutcome&);

    // "Freed 31.2 MB. 2 items stayed. 1 volume was unmounted."
    std::string text() const;
};

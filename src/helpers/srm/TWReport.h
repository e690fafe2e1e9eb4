#pragma once

#include <cstddef>
#include <string>

// Tells the parent process on standard error what happened. There are failures and notices:
//
//   srm: PATH: TEXT          a failure: something was kept, or could not be overwritten
//   srm: and N more: TEXT    failures that did not fit
//   srm: note: PATH: TEXT    a notice: the entry is gone as requested, but there is something to know about it
//   srm: note: and N more    notices that did not fit
//   srm: arguments: TEXT     wrong use, alone
//
// Failures are written at once and notices only in finish(), so every failure comes before every notice. PATH is the
// path as given, "./NAME", or a path below it: it always starts with "./" and so cannot be mistaken for "note". Control
// characters in it appear as \xNN, and a long path is cut in the middle. All lines together stay below 4 KiB,
// however much goes wrong: a parent that keeps only the first 4 KiB misses nothing.
class TWReport final {
public:
    void failure(const std::string& path, const char* text);
    void notice(const std::string& path, const char* text);

    // A path as it appears in a line, at most 400 bytes.
    static std::string shown(const std::string& path);

    // Writes the notices and the counts of omitted lines. Call it once, at the end.
    void finish();

private:
    // How much of one kind was reported.
    struct Tally {
        bool admits(const std::string& line);

        int lines = 0;
        std::size_t bytes = 0;
        long omitted = 0;
    };

    Tally failures_;
    Tally notices_;
    std::string heldNotices_;
};

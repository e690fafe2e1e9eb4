#pragma once

#include "formats/TWEntryCuts.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Finds entries and groups in INI files, including those of KDE and Qt programs. A name is the name
//  - of a group, or of one part of a nested group such as [Outer][Inner]: the whole group goes;
//  - of an entry, without its suffixes in brackets, or of one part of a nested entry such as recent\1\path.
// Names escaped as %20 or \x20 are also found by what they stand for.
//
// The file is refused unless every line is blank, a comment, a group, an entry or a continuation: an indented line
// directly below an entry that is indented less. Any thread.
class TWINIScanner final {
public:
    // The bytes and the cuts must outlive the scanner.
    TWINIScanner(std::string_view bytes, TWEntryCuts& cuts);

    // On failure returns false and sets the problem to one short English clause. Called once.
    bool scan(std::string& problem);

private:
    // A line without its line end and without blanks around its text.
    struct Line {
        std::size_t begin;
        std::size_t indentation;
        std::string_view text;
        std::size_t end;
    };

    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    bool scanAll();
    bool takeLine(const Line& line);
    bool takeGroup(const Line& line);
    bool takeEntry(const Line& line);
    bool takeContinuation(const Line& line);
    bool open(TWEntryCuts::Key key, const Line& line);
    bool endsInBackslash(std::size_t end) const;
    void endEntry();
    void endGroup();
    TWEntryCuts::Key groupKey(std::string_view header) const;
    TWEntryCuts::Key entryKey(std::string_view name) const;
    TWEntryCuts::Key keyOf(std::string_view name) const;
    void reportGroup(std::string_view header);
    void reportEntry();
    bool fail(std::string_view problem);

    std::string_view bytes_;
    TWEntryCuts& cuts_;
    std::string_view problem_;
    std::size_t previousEnd_ = 0; // of the line before
    std::size_t entryIndentation_ = None; // of the entry that may continue in the next line
    std::size_t entryBegin_ = 0;
    bool cutsEntry_ = false;
    std::size_t entryEnd_ = 0;
    bool cutsGroup_ = false;
    std::size_t groupEnd_ = 0; // without the comments after its last entry, which may belong to the next group
    bool groupGoesOn_ = false; // blank lines belong to the group: there was no comment after its last entry
    std::vector<TWKeyCollector::Step> groupPath_; // if keys are collected
};

#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Looks for many words in one text at once, as parts of it, whatever their case: "strasse" is found in "Hauptstraße".
// Case is told apart as Unicode's full case folding does, in no particular language; composed and decomposed letters
// differ. The text may hold any bytes: words are found in its valid parts, never across an invalid byte. An empty word
// and a word that is not valid UTF-8 are never found. Any thread.
class TWKeywordMatcher final {
public:
    explicit TWKeywordMatcher(const std::vector<std::string>& words);

    bool matches(std::string_view text) const { return search(text, Wanted::AnyWord) != NoWord; }

    // Of all words that are in the text, the index of the one that stands first in the list.
    std::optional<std::size_t> firstMatch(std::string_view text) const;

    // No word can ever be found.
    bool empty() const { return classCount_ == 1; }

private:
    using Index = std::uint32_t; // of a state or of a word
    static constexpr Index NoWord = UINT32_MAX;

    // The words as a tree of bytes (Aho-Corasick). The states stand in the order of their depth, so that the children
    // of a state are neighbours, and end where those of the next state begin.
    struct State {
        Index firstChild;
        Index shorter; // the state of the longest proper ending of this state's text
        Index word; // the first one in the list of those ending here, or NoWord
    };
    struct Word;
    enum class Wanted { AnyWord, FirstInList };

    void makeClasses(const std::vector<Word>& sorted);
    void makeStates(const std::vector<Word>& sorted);
    void linkStates();
    void makeRows();
    void makeBeginnings();

    Index search(std::string_view text, Wanted) const;
    std::ptrdiff_t nextBeginning(std::string_view text, std::ptrdiff_t at) const;
    Index stepFolded(Index state, char32_t folded, Index& found) const;
    Index step(Index state, std::uint8_t byteClass) const;
    Index child(Index state, std::uint8_t byteClass) const;

    std::vector<State> states_; // and one more at the end, where the children of the last state end
    std::vector<std::uint8_t> classes_; // of the byte that leads to each state
    std::array<std::uint8_t, 256> classOf_{}; // the bytes that occur in words have numbers of their own, all others 0
    std::array<std::uint8_t, 256>
        classOfText_{}; // the same for a byte of a text: case folded, beyond ASCII classCount_
    std::size_t classCount_ = 1;
    std::vector<Index> rows_; // for the first states, in which most steps are made: the next state for every class
    Index rowCount_ = 0;
    std::vector<char> beginnings_; // for two bytes of a text, by their classes: whether a word could begin with them
};

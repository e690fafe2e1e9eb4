#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Searches a text for many words at once, as substrings and ignoring case: "strasse" is found in "Hauptstraße". Uses
// Unicode's full case folding without the rules of any language; composed and decomposed letters differ. The text may
// hold any bytes: words are found in its valid UTF-8 parts, never across an invalid byte. An empty word and a word that
// is not valid UTF-8 are never found. Any thread.
class TWKeywordMatcher final {
public:
    explicit TWKeywordMatcher(const std::vector<std::string>& words);

    bool matches(std::string_view text) const { return search(text, Wanted::AnyWord) != NoWord; }

    // The lowest index of the words found in the text. Nothing if none is found.
    std::optional<std::size_t> firstMatch(std::string_view text) const;

    // True if no word can ever be found.
    bool empty() const { return classCount_ == 1; }

private:
    using Index = std::uint32_t; // the index of a state or of a word
    static constexpr Index NoWord = UINT32_MAX;

    // The words form a trie of bytes (Aho-Corasick). States are sorted by depth, so the children of a state are
    // contiguous and end where the children of the next state begin.
    struct State {
        Index firstChild;
        Index shorter; // the state of the longest proper suffix of this state's text (failure link)
        Index word; // the lowest index of the words that end here, or NoWord
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

    std::vector<State> states_; // plus a sentinel, at which the children of the last state end
    std::vector<std::uint8_t> classes_; // the class of the byte that leads to each state
    std::array<std::uint8_t, 256>
        classOf_{}; // each byte that occurs in a word has a class of its own; all others have 0
    std::array<std::uint8_t, 256>
        classOfText_{}; // the class of a byte of a text after case folding; classCount_ beyond ASCII
    std::size_t classCount_ = 1;
    std::vector<Index> rows_; // the next state for every class, for the first states, where most steps happen
    Index rowCount_ = 0;
    std::vector<char> beginnings_; // whether a word could begin with two bytes of a text, indexed by their classes
};

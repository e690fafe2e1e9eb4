#include "support/TWKeywordMatcher.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <memory>

namespace {

constexpr std::size_t LargestRows = 1 << 20; // bytes; a larger table would not fit into the processor's caches
constexpr unsigned char FirstBeyondASCII = 0x80;
constexpr int MostFolded = 3; // the most code points that one code point folds to; "ΐ" folds to three

struct Folded {
    char32_t codePoints[MostFolded];
    int count;
};

Folded foldByLibrary(char32_t codePoint)
{
    UChar source[U16_MAX_LENGTH];
    UChar target[MostFolded * U16_MAX_LENGTH];
    int32_t length = 0;
    U16_APPEND_UNSAFE(source, length, codePoint);
    UErrorCode status = U_ZERO_ERROR;
    length = u_strFoldCase(target, MostFolded * U16_MAX_LENGTH, source, length, U_FOLD_CASE_DEFAULT, &status);
    Folded folded{ {}, 0 };
    for (int32_t at = 0; at < length; ++folded.count)
        U16_NEXT_UNSAFE(target, at, folded.codePoints[folded.count]);
    return folded;
}

// Caches the library's foldings for the Basic Multilingual Plane, because asking for them would take most of the
// search's time.
class FoldingTable final {
public:
    FoldingTable()
    {
        for (char32_t codePoint = FirstBeyondASCII; codePoint < Size; ++codePoint) {
            const Folded folded = U_IS_SURROGATE(codePoint) ? Folded{} : foldByLibrary(codePoint);
            if (folded.count == 1 && folded.codePoints[0] < Size)
                (*table_)[codePoint] = static_cast<char16_t>(folded.codePoints[0]);
        }
    }

    Folded fold(char32_t codePoint) const
    {
        if (codePoint < Size && (*table_)[codePoint] != 0)
            return { { (*table_)[codePoint] }, 1 };
        return foldByLibrary(codePoint);
    }

private:
    static constexpr char32_t Size = 0x10000;
    std::unique_ptr<std::array<char16_t, Size>> table_
        = std::make_unique<std::array<char16_t, Size>>(); // 0: ask the library
};

char foldASCII(char byte)
{
    return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte;
}

Folded fold(char32_t codePoint)
{
    if (codePoint < FirstBeyondASCII)
        return { { static_cast<char32_t>(foldASCII(static_cast<char>(codePoint))) }, 1 };
    static const FoldingTable table; // takes a few milliseconds, so only the first letter beyond ASCII makes it
    return table.fold(codePoint);
}

// Advances at by one code point. Negative if there is an invalid byte instead.
UChar32 nextCodePoint(std::string_view text, std::ptrdiff_t& at)
{
    UChar32 codePoint;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion" // inside the library's macro
    U8_NEXT(text, at, std::ssize(text), codePoint);
#pragma GCC diagnostic pop
    return codePoint;
}

// Returns "" if the word is not valid UTF-8.
std::string foldWord(std::string_view word)
{
    std::string folded;
    for (std::ptrdiff_t at = 0, end = std::ssize(word); at < end;) {
        const UChar32 codePoint = nextCodePoint(word, at);
        if (codePoint < 0)
            return {};
        const Folded found = fold(static_cast<char32_t>(codePoint));
        for (int i = 0; i < found.count; ++i) {
            char bytes[U8_MAX_LENGTH];
            int length = 0;
            U8_APPEND_UNSAFE(bytes, length, found.codePoints[i]);
            folded.append(bytes, static_cast<std::size_t>(length));
        }
    }
    return folded;
}

}

struct TWKeywordMatcher::Word {
    std::string folded;
    Index index;
};

TWKeywordMatcher::TWKeywordMatcher(const std::vector<std::string>& words)
{
    std::vector<Word> sorted;
    for (std::size_t index = 0; index < words.size(); ++index)
        if (std::string folded = foldWord(words[index]); !folded.empty())
            sorted.push_back({ std::move(folded), static_cast<Index>(index) });
    std::ranges::stable_sort(sorted, {}, &Word::folded);
    makeClasses(sorted);
    makeStates(sorted);
    linkStates();
    makeRows();
    makeBeginnings();
}

void TWKeywordMatcher::makeClasses(const std::vector<Word>& sorted)
{
    for (const Word& word : sorted)
        for (const char byte : word.folded)
            if (std::uint8_t& byteClass = classOf_[static_cast<unsigned char>(byte)]; byteClass == 0)
                byteClass
                    = static_cast<std::uint8_t>(classCount_++); // valid UTF-8 has no more than 243 different bytes
    classOfText_.fill(static_cast<std::uint8_t>(classCount_));
    for (std::size_t byte = 0; byte < FirstBeyondASCII; ++byte)
        classOfText_[byte] = classOf_[static_cast<unsigned char>(foldASCII(static_cast<char>(byte)))];
}

void TWKeywordMatcher::makeStates(const std::vector<Word>& sorted)
{
    // The sorted words that begin with a state's text are contiguous; a word equal to that text comes first.
    struct Range {
        std::size_t begin, end, depth;
    };
    std::vector<Range> ranges{ { 0, sorted.size(), 0 } };
    classes_.push_back(0);
    for (std::size_t state = 0; state < ranges.size(); ++state) {
        auto [begin, end, depth] = ranges[state];
        State made{ static_cast<Index>(ranges.size()), 0, NoWord };
        for (; begin < end && sorted[begin].folded.size() == depth; ++begin)
            made.word = std::min(made.word, sorted[begin].index);
        while (begin < end) {
            const char byte = sorted[begin].folded[depth];
            std::size_t next = begin + 1;
            while (next < end && sorted[next].folded[depth] == byte)
                ++next;
            ranges.push_back({ begin, next, depth + 1 });
            classes_.push_back(classOf_[static_cast<unsigned char>(byte)]);
            begin = next;
        }
        states_.push_back(made);
    }
    states_.push_back({ static_cast<Index>(ranges.size()), 0, NoWord });
}

// Returns 0 if there is no such child: the root, state 0, is nobody's child.
TWKeywordMatcher::Index TWKeywordMatcher::child(Index state, std::uint8_t byteClass) const
{
    const Index end = states_[state + 1].firstChild;
    for (Index child = states_[state].firstChild; child < end; ++child)
        if (classes_[child] == byteClass)
            return child;
    return 0;
}

void TWKeywordMatcher::linkStates()
{
    for (Index state = 0; state + 1 < states_.size(); ++state) {
        for (Index next = states_[state].firstChild; next < states_[state + 1].firstChild; ++next) {
            Index shorter = 0;
            for (Index ending = state; ending != 0 && shorter == 0;) {
                ending = states_[ending].shorter;
                shorter = child(ending, classes_[next]);
            }
            states_[next].shorter = shorter;
            states_[next].word = std::min(states_[next].word, states_[shorter].word);
        }
    }
}

void TWKeywordMatcher::makeRows()
{
    rowCount_ = static_cast<Index>(std::min(states_.size() - 1, LargestRows / (classCount_ * sizeof(Index))));
    rows_.resize(rowCount_ * classCount_);
    for (Index state = 0; state < rowCount_; ++state) {
        for (std::size_t byteClass = 1; byteClass < classCount_; ++byteClass) {
            Index next = child(state, static_cast<std::uint8_t>(byteClass));
            if (next == 0 && state != 0)
                next = rows_[states_[state].shorter * classCount_
                    + byteClass]; // a shallower state, whose row exists already
            rows_[state * classCount_ + byteClass] = next;
        }
    }
}

void TWKeywordMatcher::makeBeginnings()
{
    // One more class for bytes beyond ASCII, which are not folded yet and could become anything.
    const std::size_t width = classCount_ + 1;
    beginnings_.assign(width * width, 0);
    for (std::size_t first = 0; first < width; ++first) {
        const Index state = first < classCount_ ? child(0, static_cast<std::uint8_t>(first)) : 0;
        const bool always = first == classCount_ || (state != 0 && states_[state].word != NoWord);
        for (std::size_t second = 0; second < width; ++second)
            beginnings_[first * width + second] = always || second == classCount_
                    || (state != 0 && child(state, static_cast<std::uint8_t>(second)) != 0)
                ? 1
                : 0;
    }
}

// At most places in most names no word can begin. Skipping these takes a third of the time that stepping takes.
std::ptrdiff_t TWKeywordMatcher::nextBeginning(std::string_view text, std::ptrdiff_t at) const
{
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const std::ptrdiff_t last = std::ssize(text) - 1;
    const std::size_t width = classCount_ + 1;
    while (at < last && !beginnings_[classOfText_[bytes[at]] * width + classOfText_[bytes[at + 1]]])
        ++at;
    return at;
}

inline TWKeywordMatcher::Index TWKeywordMatcher::step(Index state, std::uint8_t byteClass) const
{
    while (state >= rowCount_) {
        if (const Index next = child(state, byteClass))
            return next;
        state = states_[state].shorter;
    }
    return rows_[state * classCount_ + byteClass];
}

TWKeywordMatcher::Index TWKeywordMatcher::stepFolded(Index state, char32_t folded, Index& found) const
{
    std::uint8_t bytes[U8_MAX_LENGTH];
    int length = 0;
    U8_APPEND_UNSAFE(bytes, length, folded);
    for (int i = 0; i < length; ++i) {
        state = step(state, classOf_[bytes[i]]);
        found = std::min(found, states_[state].word);
    }
    return state;
}

TWKeywordMatcher::Index TWKeywordMatcher::search(std::string_view text, Wanted wanted) const
{
    Index found = NoWord;
    Index state = 0;
    for (std::ptrdiff_t at = 0, end = std::ssize(text); at < end;) {
        if (state == 0)
            at = nextBeginning(text, at);
        const auto byte = static_cast<unsigned char>(text[static_cast<std::size_t>(at)]);
        if (byte < FirstBeyondASCII) {
            state = step(state, classOfText_[byte]);
            found = std::min(found, states_[state].word);
            ++at;
        } else {
            const UChar32 codePoint = nextCodePoint(text, at);
            const Folded folded = codePoint < 0 ? Folded{} : fold(static_cast<char32_t>(codePoint));
            if (codePoint < 0)
                state = 0; // no word is found across an invalid byte
            for (int i = 0; i < folded.count; ++i)
                state = stepFolded(state, folded.codePoints[i], found);
        }
        if (wanted == Wanted::AnyWord && found != NoWord)
            break;
    }
    return found;
}

std::optional<std::size_t> TWKeywordMatcher::firstMatch(std::string_view text) const
{
    const Index found = search(text, Wanted::FirstInList);
    return found == NoWord ? std::nullopt : std::optional<std::size_t>(found);
}

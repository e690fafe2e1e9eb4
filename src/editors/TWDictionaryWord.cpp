#include "editors/TWDictionaryWord.h"

#include "support/TWText.h"

#include <numeric>

namespace {

// The search for words in names takes about 45 bytes of memory for each byte of the words, and builds its table before
// it looks at the first name: for a longer dictionary that would be seconds and hundreds of megabytes.
constexpr std::size_t LongestDictionary = std::size_t{ 1 } << 20;
constexpr auto TooLong = "its words are longer than 1 MiB together";

}

std::optional<TWDictionaryWord> TWDictionaryWord::from(TWValue value)
{
    auto* data = value.data();
    if (!data || !TWText::isValidUTF8(data->bytes))
        return std::nullopt;
    return TWDictionaryWord{ std::move(data->bytes) };
}

std::string TWDictionaryWord::problem(const std::vector<TWDictionaryWord>& words)
{
    const auto length = std::accumulate(words.begin(), words.end(), std::size_t(0),
        [](std::size_t sum, const TWDictionaryWord& word) { return sum + word.text.size(); });
    return length > LongestDictionary ? TooLong : "";
}

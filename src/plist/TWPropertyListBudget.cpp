#include "plist/TWPropertyListBudget.h"

#include "plist/TWPropertyList.h"

#include <algorithm>

namespace {

// Texts up to this length are stored inside their std::string.
constexpr std::uint64_t LongestInlineText = 15;

// The size of a glibc heap block: 8 more bytes for its size, rounded up to a multiple of 16, at least 32.
std::uint64_t block(std::uint64_t bytes)
{
    return bytes == 0 ? 0 : std::max<std::uint64_t>(32, (bytes + 8 + 15) / 16 * 16);
}

// The problem texts name these limits.
static_assert(TWPropertyList::MaximumBytes == 64'000'000 && TWPropertyList::MaximumMemory == 100'000'000
    && TWPropertyList::MaximumDepth == 512);

}

TWPropertyListBudget::TWPropertyListBudget()
    : left_(TWPropertyList::MaximumMemory)
{
}

bool TWPropertyListBudget::charge(std::uint64_t bytes)
{
    if (bytes > left_)
        return false;
    left_ -= bytes;
    return true;
}

bool TWPropertyListBudget::chargeText(std::uint64_t length)
{
    return length <= LongestInlineText || (length <= left_ && charge(block(length + 1)));
}

// Counts come from files, so the arithmetic must not overflow.
bool TWPropertyListBudget::chargeItems(std::uint64_t count)
{
    return count <= left_ && charge(count * sizeof(TWValue));
}

bool TWPropertyListBudget::chargeEntries(std::uint64_t count)
{
    return count <= left_ && charge(count * sizeof(TWDictionary::Entry));
}

bool TWPropertyListBudget::closeArray(std::uint64_t count)
{
    const std::uint64_t slots = count * sizeof(TWValue);
    return charge(block(slots) - slots);
}

bool TWPropertyListBudget::closeDictionary(std::uint64_t count)
{
    const std::uint64_t slots = count * sizeof(TWDictionary::Entry);
    return charge(block(slots) - slots);
}

bool TWPropertyListBudget::chargeArray(std::uint64_t count)
{
    return chargeItems(count) && closeArray(count);
}

bool TWPropertyListBudget::chargeDictionary(std::uint64_t count)
{
    return chargeEntries(count) && closeDictionary(count);
}

std::string_view TWPropertyListBudget::chargeValue(const TWValue& value, int depth)
{
    if (const auto* text = value.string())
        return chargeText(text->size()) ? "" : TooLarge;
    if (const auto* data = value.data())
        return chargeText(data->bytes.size()) ? "" : TooLarge;
    const auto* items = value.array();
    const auto* dictionary = value.dictionary();
    if (!items && !dictionary)
        return "";
    if (depth >= TWPropertyList::MaximumDepth)
        return TooDeep;
    if (items ? !chargeArray(items->size()) : !chargeDictionary(dictionary->size()))
        return TooLarge;
    std::string_view problem;
    for (std::size_t i = 0; items && i < items->size() && problem.empty(); i++)
        problem = chargeValue((*items)[i], depth + 1);
    for (std::size_t i = 0; dictionary && i < dictionary->size() && problem.empty(); i++) {
        const auto& [key, entry] = dictionary->entries()[i];
        problem = chargeText(key.size()) ? chargeValue(entry, depth + 1) : TooLarge;
    }
    return problem;
}

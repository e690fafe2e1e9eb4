#pragma once

#include "plist/TWValue.h"

#include <cstdint>
#include <string_view>

// Limits the memory that the values of one list take. Reading charges each value as it is built and writing charges the
// whole list, both with the same estimate, so that what can be written can be read back. The estimate counts what a
// 64-bit allocator takes: the slots in arrays and dictionaries, and the heap blocks of containers and of long texts.
class TWPropertyListBudget final {
public:
    // Problem texts; each names its limit.
    static constexpr std::string_view TooLong = "it is longer than 64 MB";
    static constexpr std::string_view TooLarge = "its values would take more than 100 MB of memory";
    static constexpr std::string_view TooDeep = "it is nested more than 512 levels deep";

    TWPropertyListBudget();

    // What is left, in bytes.
    std::uint64_t left() const { return left_; }

    // Each returns false and charges nothing if the budget does not suffice.
    bool chargeText(std::uint64_t length); // also for data
    bool chargeItems(std::uint64_t count); // their slots in an array
    bool chargeEntries(std::uint64_t count); // their slots in a dictionary
    bool chargeArray(std::uint64_t count); // the slots and their heap block
    bool chargeDictionary(std::uint64_t count);

    // Charges the heap block of a container whose slots were charged one by one.
    bool closeArray(std::uint64_t count);
    bool closeDictionary(std::uint64_t count);

    // Charges what a value holds, but not its own slot. The depth is the number of containers around it. Returns
    // TooLarge or TooDeep if the value cannot be written, else "".
    std::string_view chargeValue(const TWValue&, int depth);

private:
    bool charge(std::uint64_t bytes);

    std::uint64_t left_;
};

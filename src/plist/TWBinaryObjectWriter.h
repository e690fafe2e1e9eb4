#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Writes the objects of a binary property list, one after the other, and the table of their places. Objects have the
// numbers 0, 1, 2... in the order in which they are begun. Any thread.
class TWBinaryObjectWriter final {
public:
    // The beginning is the format and its version, "bplist00".
    TWBinaryObjectWriter(std::string_view beginning, std::size_t objectCount);

    void beginObject() { offsets_.push_back(output_.size()); }
    void addBytes(std::string_view bytes) { output_ += bytes; }
    // A type with a length, or with the number of items or keys.
    void addMarker(unsigned type, std::size_t count);
    void addInteger(std::int64_t number);
    // Big-endian.
    void addNumber(std::uint64_t number, std::size_t size);
    void addReference(std::uint64_t number) { addNumber(number, referenceSize_); }
    // Ends the list. Its root is the object of that number.
    void addTable(std::uint64_t root);

    std::string& output() { return output_; }

private:
    std::string output_;
    std::vector<std::size_t> offsets_;
    std::size_t referenceSize_;
};

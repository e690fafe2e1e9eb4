#pragma once

#include "plist/TWPropertyListBudget.h"

#include <optional>
#include <string>
#include <string_view>

// Reads one binary property list. The format is a table of objects that refer to one another by number, so a few bytes
// can stand for a huge or endless value; the reader therefore limits the depth and the memory of the result while it
// builds it. Any thread.
class TWBinaryPropertyListReader final {
public:
    // The bytes must outlive the reader.
    explicit TWBinaryPropertyListReader(std::string_view bytes);

    std::optional<TWValue> read(std::string& problem);

private:
    // The unread rest of the file's object area. Values are taken from its front.
    using Rest = std::string_view;

    bool readTrailer();
    bool readObject(std::uint64_t number, TWValue& value);
    bool readSimple(unsigned kind, TWValue& value);
    bool readInteger(unsigned kind, Rest rest, TWValue& value);
    bool readReal(unsigned kind, Rest rest, TWValue& value);
    bool readDate(unsigned kind, Rest rest, TWValue& value);
    bool readData(unsigned kind, Rest rest, TWValue& value);
    bool readASCII(unsigned kind, Rest rest, TWValue& value);
    bool readUTF16(unsigned kind, Rest rest, TWValue& value);
    bool readArray(unsigned kind, Rest rest, TWValue& value);
    bool readDictionary(unsigned kind, Rest rest, TWValue& value);

    std::optional<Rest> objectAt(std::uint64_t number);
    bool takeCount(unsigned kind, Rest& rest, std::uint64_t& count);
    bool take(Rest& rest, std::uint64_t length, std::string_view& taken);
    bool takeReferences(Rest& rest, std::uint64_t count, std::string_view& references);
    std::uint64_t referenceAt(std::string_view references, std::size_t place) const;
    bool charged(bool success);
    bool enter();
    bool fail(std::string_view problem);

    std::string_view bytes_;
    std::string_view problem_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::uint64_t objectCount_ = 0;
    std::uint64_t topObject_ = 0;
    std::size_t table_ = 0; // where the objects end and the table of their offsets begins
    TWPropertyListBudget budget_;
    int depth_ = 0;
};

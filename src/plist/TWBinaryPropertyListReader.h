#pragma once

#include "plist/TWBinaryObjects.h"
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
    using Object = TWBinaryObjects::Object;

    bool readObject(std::uint64_t number, TWValue& value);
    bool readSimple(const Object& object, TWValue& value);
    bool readInteger(const Object& object, TWValue& value);
    bool readReal(const Object& object, TWValue& value);
    bool readDate(const Object& object, TWValue& value);
    bool readData(const Object& object, TWValue& value);
    bool readASCII(const Object& object, TWValue& value);
    bool readUTF16(const Object& object, TWValue& value);
    bool readArray(const Object& object, TWValue& value);
    bool readDictionary(const Object& object, TWValue& value);

    bool charged(bool success);
    bool enter();
    bool fail(std::string_view problem);

    std::string_view bytes_;
    std::string_view problem_;
    TWBinaryObjects objects_;
    TWPropertyListBudget budget_;
    int depth_ = 0;
};

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// The objects of a binary property list as they stand in the file. The format is a table of objects that refer to one
// another by number. Any thread.
class TWBinaryObjects final {
public:
    using Number = std::uint32_t;

    enum Type : unsigned {
        Simple,
        Integer,
        Real,
        Date,
        Data,
        ASCII,
        UTF16,
        UID = 8,
        Array = 0xa,
        OrderedSet,
        Set,
        Dictionary
    };

    struct Object {
        Type type = Simple;
        std::string_view bytes; // all
        std::string_view content; // without type and length
        std::size_t count = 0; // the length; of a dictionary the number of its keys
        bool isContainer() const { return type >= Array; }
    };

    // The bytes must outlive the objects.
    explicit TWBinaryObjects(std::string_view bytes);

    // False if the beginning or the end of the file is damaged. Then there is no object.
    bool valid() const { return valid_; }
    Number count() const { return count_; }
    std::uint64_t top() const { return top_; }
    std::string_view beginning() const { return bytes_.substr(0, 8); }

    // Nothing if there is no such object, or if it is damaged or of an unknown type.
    std::optional<Object> at(std::uint64_t number) const;

    // The number in one place of a container. A dictionary has all its keys first, then all values.
    std::uint64_t reference(const Object& container, std::size_t place) const;

    // Big-endian, up to 8 bytes.
    static std::uint64_t unsignedFrom(std::string_view bytes);

    // The text of a string in UTF-8; nothing if it is no string or not valid.
    static std::optional<std::string> text(const Object& object);

private:
    void readTrailer();
    std::optional<std::uint64_t> contentLength(const Object& object) const;

    std::string_view bytes_;
    bool valid_ = false;
    Number count_ = 0;
    std::uint64_t top_ = 0;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::size_t table_ = 0; // where the objects end and the table of their offsets begins
};

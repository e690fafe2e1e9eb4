#pragma once

#include "formats/TWEntryCuts.h"
#include "plist/TWBinaryObjects.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class TWBinaryObjectWriter;

// Finds dictionary entries in a binary property list and rewrites the list without them. All other objects are copied
// as they are, even what TWPropertyList does not keep: UIDs, 32-bit reals, the first value of a key that a dictionary
// has twice. Any thread.
class TWBinaryPropertyListScanner final {
public:
    // The bytes and the cuts must outlive the scanner.
    TWBinaryPropertyListScanner(std::string_view bytes, TWEntryCuts& cuts);

    // On failure returns false and sets the problem to one short English clause. Called once.
    bool scan(std::string& problem);

private:
    using Key = TWEntryCuts::Key;
    using Number = TWBinaryObjects::Number;
    using Object = TWBinaryObjects::Object;

    bool countEntries();
    // Walks the list without the entries of that many keys, the first ones.
    bool walk(Key keys);
    bool visit(std::uint64_t number, Key keys);
    bool visitEntries(const Object& dictionary, Key keys);

    bool reach(std::uint64_t number);
    std::optional<Key> keyNamed(std::uint64_t number) const;

    std::string rewrite();
    void writeObject(const Object& object, TWBinaryObjectWriter& writer) const;
    bool fail(std::string_view problem);

    std::string_view bytes_;
    TWEntryCuts& cuts_;
    TWBinaryObjects objects_;
    std::string_view problem_;
    std::vector<bool> isReached_;
    std::vector<Number> reached_; // in the order of the latest walk
    std::size_t reachedBytes_ = 0;
    std::vector<Number> newNumbers_;
};

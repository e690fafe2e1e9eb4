#pragma once

#include "formats/TWKeyCollector.h"

#include <bitset>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Collects the entries of one file whose names are among the wanted keys: counts them and cuts their bytes out. The
// scanners of the formats call it. Any thread. The bytes, the keys and the collector must outlive it.
class TWEntryCuts final {
public:
    // The number of a key: its place in the list of keys. Keys are handled in the order of their numbers, so a key that
    // stands in the list twice finds nothing the second time.
    using Key = std::size_t;
    static constexpr Key NoKey = static_cast<Key>(-1);

    TWEntryCuts(std::string_view bytes, const std::vector<std::string>& keys, TWKeyCollector* collector = nullptr);

    // If it is not null, the scanners report all names and values to it.
    TWKeyCollector* collector() const { return collector_; }

    // NoKey if no key has exactly this name.
    Key find(std::string_view name) const;

    // An entry begins and ends at these places in the file. Entries must be nested, and are reported in the order of
    // the file. An entry inside another one counts only if its key is handled first, because otherwise it has gone
    // together with the outer one.
    void open(Key key, std::size_t begin);
    void close(std::size_t end);

    // Counts an entry of a file that is rewritten instead of cut.
    void count(Key key) { counts_[key]++; }

    // Cuts bytes that go together with an entry, such as the comma behind it.
    void addSeparator(std::size_t begin, std::size_t end);

    // Takes the place of the cuts, in formats that cannot be edited by cutting.
    void setRewritten(std::string bytes) { rewritten_ = std::move(bytes); }

    // The number of entries found, for each key.
    const std::vector<std::size_t>& counts() const { return counts_; }

    // The file without the entries; nothing if there are none. Where an entry stands alone on its lines, the lines go,
    // too. Called once.
    std::optional<std::string> takeRemainingBytes();

private:
    struct Cut {
        std::size_t begin;
        std::size_t end;
    };

    static constexpr std::size_t LengthClasses = 64;
    static std::size_t lengthClass(std::string_view name) { return name.size() % LengthClasses; }

    void add(Cut cut);
    bool isBlank(std::size_t begin, std::size_t end) const;
    Cut withWholeLines(Cut cut) const;

    std::string_view bytes_;
    TWKeyCollector* collector_;
    std::size_t keyCount_;
    std::unordered_map<std::string_view, Key> numbers_;
    std::bitset<LengthClasses> lengths_; // those of the keys
    std::vector<std::size_t> counts_;
    std::vector<Key> open_; // for each open entry, the smallest key around and including it
    std::size_t begin_ = 0; // of the outermost open entry
    std::vector<Cut> cuts_;
    std::optional<std::string> rewritten_;
};

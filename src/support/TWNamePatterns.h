#pragma once

#include "support/TWNamePattern.h"

#include <cstddef>
#include <functional>
#include <map>
#include <unordered_map>
#include <vector>

// Many patterns for file names. A name is compared only with those whose literal end or beginning fits, so that a
// thousand patterns such as "*.kdbx" take hardly longer than one. Any thread, while no pattern is added.
class TWNamePatterns final {
public:
    void add(const std::string& pattern);

    bool empty() const { return patterns_.empty(); }

    // The first of the patterns that matches the whole name, or nullptr. Valid until a pattern is added.
    const TWNamePattern* match(std::string_view name) const;

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    using Indexes = std::vector<std::size_t>; // into patterns_, ascending
    using ByText = std::unordered_map<std::string, Indexes, Hash, std::equal_to<>>;

    void compare(const Indexes&, std::string_view name, std::size_t& best) const;

    std::vector<TWNamePattern> patterns_;
    std::map<std::size_t, ByText> byEnd_; // by the length of the literal end, then by that end
    std::map<std::size_t, ByText> byBeginning_; // those without a literal end
    Indexes others_; // neither end is literal
};

#pragma once

#include "formats/TWEntryCuts.h"

#include <cstddef>
#include <memory>
#include <string_view>

// Says what an entry is in one kind of XML file. TWXMLScanner calls it for the elements below the root and for the root
// itself, which is never an entry.
class TWXMLDialect {
public:
    // Names and values alternate; a null pointer ends them.
    using Attributes = const char**;

    // Chosen by the name of the root element. The cuts must outlive the dialect.
    static std::unique_ptr<TWXMLDialect> make(std::string_view root, TWEntryCuts& cuts);

    virtual ~TWXMLDialect() = default;

    virtual std::string_view formatName() const = 0;

    // The tag begins at this place. Returns false if the element is not allowed there.
    virtual bool start(std::string_view name, Attributes attributes, std::size_t begin) = 0;

    // The element ends before this place. Returns false if something is missing in it.
    virtual bool end(std::string_view name, std::size_t end) = 0;

    // Called only if the dialect wants text. Returns false if it is not allowed there.
    virtual bool wantsText() const { return false; }
    virtual bool text(std::string_view) { return true; }
};

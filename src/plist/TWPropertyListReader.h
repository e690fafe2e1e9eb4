#pragma once

#include "plist/TWPropertyList.h"
#include "plist/TWXMLPropertyListReader.h"

// Reads one property list whose bytes arrive in pieces, so that an XML file need not be held in memory. Any thread.
class TWPropertyListReader final {
public:
    // Returns false once the list is refused; further pieces change nothing.
    bool take(std::string_view piece);

    // Called once, after the last piece.
    TWPropertyListResult finish();

private:
    std::optional<TWXMLPropertyListReader> xml_; // set once the format is known to be XML
    std::string bytes_; // all bytes so far of a binary list or of one whose format is not known yet
    std::size_t length_ = 0;
};

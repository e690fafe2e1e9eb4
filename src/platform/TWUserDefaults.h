#pragma once

#include "plist/TWValue.h"

#include <optional>
#include <string>

// The stored settings of the user: one file, read at start. Main thread. Typed reading and registered defaults
// are TWSettings' work.
class TWUserDefaults {
public:
    virtual ~TWUserDefaults() = default;

    // Of whatever type the file holds: it may have been written by hand.
    virtual std::optional<TWValue> value(const std::string& key) const = 0;
    // Holds at once; written with the next synchronize(), or by itself a moment later.
    virtual void setValue(const std::string& key, const TWValue&) = 0;
    virtual void removeValue(const std::string& key) = 0;

    // Writes what has changed and reads what another process has written. "" or one line that names the file and the
    // remedy.
    virtual std::string synchronize() = 0;

    // One line when the file was there but could not be read; it is then left untouched until the first change, before
    // which it is kept beside itself as NAME.damaged. "" when all is well.
    virtual std::string problem() const = 0;

    virtual std::string file() const = 0;
};

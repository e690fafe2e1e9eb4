#pragma once

#include "plist/TWValue.h"

#include <functional>
#include <optional>
#include <string>

// The stored settings of the user: one file, read at start. Main thread. Typed reading and registered defaults are
// TWSettings' work.
class TWUserDefaults {
public:
    virtual ~TWUserDefaults() = default;

    // The value may be of any type, because users edit the file by hand.
    virtual std::optional<TWValue> value(const std::string& key) const = 0;
    // Takes effect at once. Written by the next synchronize(), or without it a moment later.
    virtual void setValue(const std::string& key, const TWValue&) = 0;
    virtual void removeValue(const std::string& key) = 0;

    // Writes what has changed, over what another process has written meanwhile. "" or one line that names the file, the
    // reason and the remedy; the changes then still hold and are written with the next ones.
    virtual std::string synchronize() = 0;

    // Called when a write that nobody waited for has failed, with synchronize()'s line: once, until a write succeeds.
    virtual void setWriteFailed(std::function<void(const std::string&)>) = 0;

    // One line if the file was there but could not be read, "" if all is well. The file is left untouched until the
    // first change and is then kept beside the new one; the line says so, and stays until the program ends, because the
    // user's settings are gone until then. It ends before that if the file can be read again.
    virtual std::string problem() const = 0;

    virtual std::string file() const = 0;
};

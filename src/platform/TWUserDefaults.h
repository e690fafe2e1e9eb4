#pragma once

#include "plist/TWValue.h"

#include <functional>
#include <optional>
#include <string>

// The user's stored settings: one file, read at the start. TWSettings adds types and defaults. Main thread.
class TWUserDefaults {
public:
    virtual ~TWUserDefaults() = default;

    // The value may be of any type, because users edit the file by hand.
    virtual std::optional<TWValue> value(const std::string& key) const = 0;
    // Takes effect at once. The file is written a moment later, or by synchronize() if that is called before.
    virtual void setValue(const std::string& key, const TWValue&) = 0;
    virtual void removeValue(const std::string& key) = 0;

    // Writes the changed keys into the file as it is now, so that other keys written by another process are kept.
    // Returns "" or one line that names the file, the reason and the remedy. After a failure the changes stay in effect
    // and are written together with the next ones.
    virtual std::string synchronize() = 0;

    // Sets the function that gets synchronize()'s line when a write in the background has failed. It is called only
    // once until a write succeeds again.
    virtual void setWriteFailed(std::function<void(const std::string&)>) = 0;

    // One line if the file exists but could not be read, else "". The file is left untouched until the first change and
    // is then kept beside the new one, as the line says. The line stays until the program ends or the file can be read
    // again, because until then the user's settings are missing.
    virtual std::string problem() const = 0;

    virtual std::string file() const = 0;
};

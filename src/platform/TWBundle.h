#pragma once

#include "plist/TWValue.h"

#include <optional>
#include <string>

// The application's Info.plist and resource files. Main thread.
class TWBundle {
public:
    virtual ~TWBundle() = default;

    // The value of a key in Info.plist, "" if the key is missing.
    virtual std::string info(const std::string& key) const = 0;

    // The path of the resource with that name, whether it exists or not.
    virtual std::string resourcePath(const std::string& name) const = 0;

    virtual std::string identifier() const = 0;
};

#pragma once

#include "plist/TWValue.h"

#include <optional>
#include <string>

// The application's own information (Info.plist) and resource files. Main thread.
class TWBundle {
public:
    virtual ~TWBundle() = default;

    // "" when the key is missing.
    virtual std::string info(const std::string& key) const = 0;

    // Where the resource of that name lies, whether it exists or not.
    virtual std::string resourcePath(const std::string& name) const = 0;

    virtual std::string identifier() const = 0;
};

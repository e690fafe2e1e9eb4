#pragma once

#include "platform/TWBundle.h"
#include "platform/TWOwnFiles.h"

// A bundle whose Info.plist and resource files are in one folder. All values are "" if Info.plist cannot be read.
class TWFileBundle final : public TWBundle {
public:
    TWFileBundle(const TWOwnFiles&, std::string resourceFolder);

    std::string info(const std::string& key) const override;
    std::string resourcePath(const std::string& name) const override;
    std::string identifier() const override { return info("CFBundleIdentifier"); }

private:
    std::string folder_;
    TWDictionary info_;
};

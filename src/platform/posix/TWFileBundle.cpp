#include "platform/posix/TWFileBundle.h"

#include "plist/TWPropertyList.h"
#include "support/TWLog.h"
#include "support/TWText.h"

namespace {

constexpr std::size_t LongestInfo = 1 << 20;

}

TWFileBundle::TWFileBundle(const TWOwnFiles& ownFiles, std::string resourceFolder)
    : folder_(std::move(resourceFolder))
{
    const auto path = resourcePath("Info.plist");
    const auto contents = ownFiles.read(path, LongestInfo);
    const auto list = TWPropertyList::read(contents.bytes);
    if (contents.error == 0 && list.value && list.value->dictionary())
        info_ = *list.value->dictionary();
    else
        TWLog::write(TWText::fill("TWFileBundle: Could not read %@. Please install Tidewell again.", { path }));
}

std::string TWFileBundle::info(const std::string& key) const
{
    const auto* value = info_.find(key);
    return value && value->string() ? *value->string() : "";
}

std::string TWFileBundle::resourcePath(const std::string& name) const
{
    return folder_ + "/" + name;
}

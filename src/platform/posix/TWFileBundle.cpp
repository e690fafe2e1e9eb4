#include "platform/posix/TWFileBundle.h"

#include "plist/TWPropertyList.h"

namespace {

constexpr std::size_t LongestInfo = 1 << 20;

}

TWFileBundle::TWFileBundle(const TWOwnFiles& ownFiles, std::string resourceFolder)
    : folder_(std::move(resourceFolder))
{
    const auto contents = ownFiles.read(resourcePath("Info.plist"), LongestInfo);
    const auto list = TWPropertyList::read(contents.bytes);
    if (contents.error == 0 && list.value && list.value->dictionary())
        info_ = *list.value->dictionary();
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

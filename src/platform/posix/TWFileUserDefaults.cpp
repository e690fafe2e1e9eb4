#include "platform/posix/TWFileUserDefaults.h"

#include "plist/TWPropertyList.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <cerrno>

using namespace std::chrono_literals;

namespace {

constexpr auto Unreadable
    = "The settings file \"%@\" could not be read. It is left untouched until a setting is changed, and then kept as "
      "\"%@.damaged\"; please repair it, or move it away to start anew.";
constexpr auto Unwritable
    = "The settings file \"%@\" could not be saved. Please make room on the disk or check the permissions.";

constexpr std::size_t LongestFile = 1 << 20;

}

TWFileUserDefaults::TWFileUserDefaults(const TWOwnFiles& ownFiles, TWRunLoop& runLoop, std::string file)
    : ownFiles_(ownFiles)
    , runLoop_(runLoop)
    , file_(std::move(file))
{
    read();
}

void TWFileUserDefaults::read()
{
    stored_ = {};
    problem_.clear();
    const auto contents = ownFiles_.read(file_, LongestFile);
    if (contents.error == ENOENT || contents.error == ENOTDIR)
        return;
    const auto list = TWPropertyList::read(contents.bytes);
    if (contents.error == 0 && list.value && list.value->dictionary())
        stored_ = *list.value->dictionary();
    else
        problem_ = TWText::fill(Unreadable, { file_, file_ });
}

std::optional<TWValue> TWFileUserDefaults::value(const std::string& key) const
{
    if (const auto changed = changes_.find(key); changed != changes_.end())
        return changed->second;
    const auto* value = stored_.find(key);
    return value ? std::optional(*value) : std::nullopt;
}

void TWFileUserDefaults::setValue(const std::string& key, const TWValue& value)
{
    change(key, value);
}

void TWFileUserDefaults::removeValue(const std::string& key)
{
    change(key, std::nullopt);
}

void TWFileUserDefaults::change(const std::string& key, std::optional<TWValue> value)
{
    changes_[key] = std::move(value);
    writing_ = runLoop_.after(0ms, [this] { synchronize(); });
}

std::string TWFileUserDefaults::synchronize()
{
    writing_.reset();
    if (changes_.empty())
        return "";
    read();
    return write() ? "" : TWText::fill(Unwritable, { file_ });
}

// False leaves the file as it is and the changes for a later try.
bool TWFileUserDefaults::write()
{
    std::string kept;
    if (!problem_.empty() && ownFiles_.keepDamaged(file_, kept) != 0)
        return false;
    auto merged = stored_;
    for (const auto& [key, value] : changes_) {
        if (value)
            merged.set(key, *value);
        else
            merged.remove(key);
    }
    const auto bytes = TWPropertyList::write(merged, TWPropertyListFormat::XML);
    ownFiles_.makeFolders(std::string(TWPath::parent(file_)));
    if (!bytes || ownFiles_.writeAtomically(file_, *bytes) != 0)
        return false;
    stored_ = std::move(merged);
    changes_.clear();
    problem_.clear();
    return true;
}

#include "platform/posix/TWFileUserDefaults.h"

#include "platform/TWFileSystem.h"
#include "plist/TWPropertyListBudget.h"
#include "plist/TWPropertyListReader.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <cerrno>

using namespace std::chrono_literals;

namespace {

constexpr auto Unreadable
    = "The settings file \"%@\" could not be read (%@), so the default settings are in use. It is "
      "left untouched until a setting is changed, and is then kept beside the new one; please "
      "repair it, or move it away to start anew.";
constexpr auto Replaced = "The settings file could not be read, so the default settings are in use but for what was "
                          "changed since. It was kept as \"%@\"; please check your settings.";
constexpr auto NoDictionary = "it does not hold settings";
constexpr auto Dangling = "it is a link to something that is not there now";
constexpr auto Unwritable
    = "The settings file \"%@\" could not be saved (%@). Please make room on the disk or check the "
      "permissions.";
constexpr auto NotKept = "the damaged file could not be kept: %@";

std::string readingProblem(int error)
{
    return error == EFBIG  ? std::string(TWPropertyListBudget::TooLong)
        : error == ENOLINK ? Dangling
                           : TWErrorText(error);
}

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
    unreadable_.clear();
    TWPropertyListReader reader;
    const int error = ownFiles_.readPieces(
        file_, TWPropertyList::MaximumBytes, [&](std::string_view piece) { return reader.take(piece); });
    if (error == ENOENT || error == ENOTDIR)
        return;
    if (error != 0) {
        unreadable_ = readingProblem(error);
        return;
    }
    auto list = reader.finish();
    if (list.value && list.value->dictionary())
        stored_ = std::move(*list.value->dictionary());
    else
        unreadable_ = list.value ? NoDictionary : list.problem;
}

std::string TWFileUserDefaults::problem() const
{
    if (!unreadable_.empty())
        return TWText::fill(Unreadable, { file_, unreadable_ });
    return keptAs_.empty() ? "" : TWText::fill(Replaced, { keptAs_ });
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
    writing_ = runLoop_.after(0ms, [this] { writeByItself(); });
}

void TWFileUserDefaults::writeByItself()
{
    const auto problem = synchronize();
    if (!problem.empty() && writeFailed_ && !std::exchange(failureReported_, true))
        writeFailed_(problem);
}

std::string TWFileUserDefaults::synchronize()
{
    writing_.reset();
    if (changes_.empty())
        return "";
    read();
    const auto problem = write();
    if (!problem.empty())
        return TWText::fill(Unwritable, { file_, problem });
    failureReported_ = false;
    return "";
}

void TWFileUserDefaults::applyChanges()
{
    for (const auto& [key, value] : changes_) {
        if (value)
            stored_.set(key, *value);
        else
            stored_.remove(key);
    }
}

// Returns "" or the reason for a failure, after which the file is as it was and the changes wait for the next try.
std::string TWFileUserDefaults::write()
{
    std::string kept;
    if (!unreadable_.empty()) {
        const int error = ownFiles_.keepDamaged(file_, TWPropertyList::MaximumBytes, kept);
        if (error != 0 && error != ENOENT)
            return TWText::fill(NotKept, { TWErrorText(error) });
        if (error == ENOENT)
            kept.clear();
    }
    applyChanges();
    std::string problem;
    TWValue list(std::move(stored_)); // moved, not copied: it may be large
    const auto bytes = TWPropertyList::write(list, problem);
    stored_ = std::move(*list.dictionary());
    if (!bytes)
        return problem;
    ownFiles_.makeFolders(std::string(TWPath::parent(file_)));
    if (const int error = ownFiles_.writeAtomically(file_, *bytes))
        return TWErrorText(error);
    changes_.clear();
    unreadable_.clear();
    if (!kept.empty())
        keptAs_ = kept;
    return "";
}

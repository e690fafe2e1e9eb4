#include "settings/TWDataFolder.h"

#include "platform/TWFileSystem.h"
#include "plist/TWPropertyListBudget.h"
#include "plist/TWPropertyListReader.h"
#include "support/TWText.h"

#include <cerrno>

namespace {

constexpr auto Unreadable
    = "The list \"%@\" could not be read (%@). Please repair the file or move it away. If you save a new list "
      "instead, the damaged file is kept beside it under another name.";
constexpr auto NoList = "it does not hold a list";
constexpr auto Dangling = "it is a link to something that is not there now";
constexpr auto NotSaved = "The list \"%@\" could not be saved (%@). The file on disk is as it was; please make room or "
                          "check the permissions.";
constexpr auto Busy = "The list \"%@\" is being saved by another program. Please try again in a moment.";
constexpr auto Refused = "The list \"%@\" cannot be saved (%@). The file on disk is as it was.";
constexpr auto NotKept = "the damaged file could not be kept as \"%@\": %@";

}

TWDataFolder::TWDataFolder(const TWOwnFiles& ownFiles, const TWPlaces& places, const TWBundle& bundle)
    : ownFiles_(ownFiles)
    , path_(places.standardize(bundle.info("TWApplicationSupportFolder")))
{
}

std::string TWDataFolder::file(const std::string& name) const
{
    return path_.empty() ? "" : path_ + "/" + name;
}

void TWDataFolder::make() const
{
    if (ownFiles_.makeFolders(path_) == 0)
        ownFiles_.removeLeftovers(path_);
}

static std::string readingProblem(int error)
{
    return error == EFBIG  ? std::string(TWPropertyListBudget::TooLong)
        : error == ENOLINK ? Dangling
                           : TWErrorText(error);
}

TWListFile TWDataFolder::read(const std::string& path) const
{
    TWListFile result;
    TWPropertyListReader reader;
    const int error = ownFiles_.readPieces(
        path, TWPropertyList::MaximumBytes, [&](std::string_view piece) { return reader.take(piece); });
    if (error == ENOENT || error == ENOTDIR) {
        result.missing = true;
        return result;
    }
    if (error != 0) {
        result.problem = unreadable(path, readingProblem(error));
        return result;
    }
    auto list = reader.finish();
    if (list.value && list.value->array())
        result.records = std::move(*list.value->array());
    else
        result.problem = unreadable(path, list.value ? NoList : list.problem);
    return result;
}

TWWrittenList TWDataFolder::write(const std::string& name, TWValue::Array records, TWOldFile oldFile) const
{
    TWWrittenList result;
    const auto path = file(name);
    const auto bytes = TWPropertyList::write(std::move(records), result.problem);
    if (!bytes) {
        result.problem = unwritable(path, result.problem);
        return result;
    }
    if (oldFile == TWOldFile::KeepAsDamaged) {
        const int error = ownFiles_.keepDamaged(path, TWPropertyList::MaximumBytes, result.keptAs);
        if (error != 0 && error != ENOENT) {
            const auto reason = TWText::fill(NotKept, { result.keptAs, TWErrorText(error) });
            return { TWText::fill(NotSaved, { path, reason }), "" };
        }
        if (error == ENOENT)
            result.keptAs.clear();
    }
    make();
    const int error = ownFiles_.writeAtomically(path, *bytes);
    if (error != 0)
        result.problem
            = error == EBUSY ? TWText::fill(Busy, { path }) : TWText::fill(NotSaved, { path, TWErrorText(error) });
    return result;
}

std::string TWDataFolder::unreadable(const std::string& path, const std::string& reason)
{
    return TWText::fill(Unreadable, { path, reason });
}

std::string TWDataFolder::unwritable(const std::string& path, const std::string& reason)
{
    return TWText::fill(Refused, { path, reason });
}

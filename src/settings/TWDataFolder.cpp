#include "settings/TWDataFolder.h"

#include "platform/TWFileSystem.h"
#include "plist/TWPropertyList.h"
#include "support/TWText.h"

#include <cerrno>

namespace {

constexpr auto Unreadable
    = "The list \"%@\" could not be read (%@). It is left untouched; please repair it, or move it away to start anew.";
constexpr auto NoList = "it does not hold a list";
constexpr auto TooLong = "it is longer than 32 MB";
constexpr auto Unwritable = "The list \"%@\" could not be saved (%@). The file on disk is as it was; please make room "
                            "or check the permissions.";
constexpr auto NotRepresentable = "a text in it is not valid UTF-8, or it is too long";
constexpr auto NotKept = "the damaged file could not be kept as \"%@\": %@";

// A list of 100,000 rules takes a tenth of this.
constexpr std::size_t LongestList = 32 << 20;

}

TWDataFolder::TWDataFolder(const TWOwnFiles& ownFiles, const TWPlaces& places, const TWBundle& bundle)
    : ownFiles_(ownFiles)
    , path_(places.standardize(bundle.info("TWApplicationSupportFolder")))
{
}

std::string TWDataFolder::file(const std::string& name) const
{
    return path_ + "/" + name;
}

void TWDataFolder::make() const
{
    ownFiles_.makeFolders(path_);
}

TWListFile TWDataFolder::read(const std::string& path) const
{
    TWListFile result;
    const auto contents = ownFiles_.read(path, LongestList);
    if (contents.error == ENOENT || contents.error == ENOTDIR) {
        result.missing = true;
        return result;
    }
    std::string problem;
    if (contents.error != 0) {
        problem = contents.error == EFBIG ? TooLong : TWErrorText(contents.error);
    } else {
        auto list = TWPropertyList::read(contents.bytes);
        if (list.value && list.value->array())
            result.records = std::move(*list.value->array());
        else
            problem = list.value ? NoList : list.problem;
    }
    if (!problem.empty())
        result.problem = TWText::fill(Unreadable, { path, problem });
    return result;
}

std::string TWDataFolder::write(const std::string& name, const TWValue::Array& records, TWOldFile oldFile) const
{
    const auto path = file(name);
    auto bytes = TWPropertyList::write(records, TWPropertyListFormat::XML);
    // XML has no control characters, but names of files do. Whoever reads tells the format by the first bytes.
    if (!bytes)
        bytes = TWPropertyList::write(records, TWPropertyListFormat::Binary);
    if (!bytes)
        return TWText::fill(Unwritable, { path, NotRepresentable });
    const auto problem = oldFile == TWOldFile::KeepAsDamaged ? keepDamaged(path) : "";
    if (!problem.empty())
        return TWText::fill(Unwritable, { path, problem });
    make();
    const int error = ownFiles_.writeAtomically(path, *bytes);
    return error == 0 ? "" : TWText::fill(Unwritable, { path, TWErrorText(error) });
}

std::string TWDataFolder::keepDamaged(const std::string& path) const
{
    std::string kept;
    const int error = ownFiles_.keepDamaged(path, kept);
    return error == 0 || error == ENOENT ? "" : TWText::fill(NotKept, { kept, TWErrorText(error) });
}

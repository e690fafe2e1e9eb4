#include "cli/TWPathArgument.h"

#include "platform/TWAmbiguousPath.h"
#include "support/TWPath.h"
#include "support/TWText.h"

namespace {

constexpr auto Ambiguous = "\"%@\" can mean two different places, because \"..\" follows a link or a moved folder in "
                           "it. Please name it without \"..\".\n";

}

TWMeantPath TWReadPathArgument(const TWFileSystem& fileSystem, const TWPlaces& places, const std::string& path)
{
    if (TWIsAmbiguousPath(fileSystem, places, path))
        return { "", "", TWText::fill(Ambiguous, { TWText::oneLine(path) }) };
    const auto meant = places.standardize(path);
    const bool asGiven = !path.starts_with('/') && path.find("/..") == std::string::npos;
    return { meant, places.abbreviate(asGiven ? TWPath::withoutTrailingSlashes(path) : meant), "" };
}

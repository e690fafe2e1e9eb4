#include "cli/TWPathArgument.h"

#include "platform/TWAmbiguousPath.h"
#include "support/TWText.h"

namespace {

constexpr auto Ambiguous = "\"%@\" can mean two different places, because \"..\" follows a link or a moved folder in "
                           "it. Please name it without \"..\".\n";

}

TWMeantPath TWReadPathArgument(const TWFileSystem& fileSystem, const TWPlaces& places, const std::string& path)
{
    if (TWIsAmbiguousPath(fileSystem, places, path))
        return { "", TWText::fill(Ambiguous, { TWText::oneLine(path) }) };
    return { places.standardize(path), "" };
}

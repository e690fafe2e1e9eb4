// srm -rf [--simple|--medium] PATH: overwrites the files at and below PATH 1, 7 or else 35 times, then removes them.
// Exits with 0 when nothing is left at PATH, 1 when something was kept, 2 when called in any other way.

#include "TWOverwriter.h"
#include "TWRandom.h"
#include "TWReport.h"
#include "TWTreeEraser.h"

#include <csignal>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr char Usage[] = "use as: srm -rf [--simple|--medium] PATH";
constexpr char BadPath[] = "not an absolute path of a file or folder";
constexpr char NoSeed[] = "the system gives no random numbers";

constexpr int ExitGone = 0;
constexpr int ExitKept = 1;
constexpr int ExitMisused = 2;

std::optional<TWOverwriteLevel> levelFromArguments(int argumentCount, char** arguments)
{
    if (argumentCount < 3 || argumentCount > 4 || std::string_view(arguments[1]) != "-rf")
        return std::nullopt;
    if (argumentCount == 3)
        return TWOverwriteLevel::Full;
    const std::string_view option = arguments[2];
    if (option == "--simple")
        return TWOverwriteLevel::Simple;
    if (option == "--medium")
        return TWOverwriteLevel::Medium;
    return std::nullopt;
}

// With a trailing slash the system would follow a link at the end.
std::string withoutTrailingSlashes(std::string path)
{
    while (path.ends_with('/'))
        path.pop_back();
    return path;
}

bool mayBeErased(const std::string& path)
{
    return path.starts_with('/') && !path.ends_with("/.") && !path.ends_with("/..");
}

}

int main(int argumentCount, char** arguments)
{
    const std::optional<TWOverwriteLevel> level = levelFromArguments(argumentCount, arguments);
    if (!level) {
        report("arguments", Usage);
        return ExitMisused;
    }
    const std::string given = arguments[argumentCount - 1];
    const std::string path = withoutTrailingSlashes(given);
    if (!mayBeErased(path)) {
        report(given, BadPath);
        return ExitMisused;
    }
    // A file beyond the limit on file sizes is a file that cannot be overwritten, no reason to die.
    std::signal(SIGXFSZ, SIG_IGN);
    TWRandom random;
    if (!random.seed()) {
        report(path, NoSeed);
        return ExitKept;
    }
    TWOverwriter overwriter(*level, random);
    TWTreeEraser eraser(overwriter, random);
    return eraser.erase(path) ? ExitGone : ExitKept;
}

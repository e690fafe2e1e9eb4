// srm -rf [--simple|--medium] ./NAME: overwrites the file NAME of the working directory, or all files below the folder
// NAME, once, 7 times or else 35 times, and removes them. It is started in the parent folder and takes no path, so no
// link or swapped folder on the way can lead it astray. What it writes to standard error is described in TWReport.h.
//
// Exits with 0 if nothing is left of NAME, with 1 if something was kept, with 2 if it was used in any other way.
// SIGHUP, SIGINT and SIGTERM stop it between two blocks and then end it, unless nothing is left by then.

#include "TWHeldSignals.h"
#include "TWOverwriter.h"
#include "TWRandom.h"
#include "TWReport.h"
#include "TWTreeEraser.h"

#include <csignal>
#include <optional>
#include <string>
#include <string_view>

namespace {

constexpr char Usage[] = "use as: srm -rf [--simple|--medium] ./NAME, with NAME an entry of the working directory";
constexpr char NoSeed[] = "the system gives no random numbers";

constexpr int ExitGone = 0;
constexpr int ExitKept = 1;
constexpr int ExitMisused = 2;

constexpr std::string_view WorkingDirectory = "./";

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

// Returns an empty name for anything but "./NAME".
std::string nameFromPath(std::string_view path)
{
    if (!path.starts_with(WorkingDirectory))
        return "";
    const std::string_view name = path.substr(WorkingDirectory.size());
    return name == "." || name == ".." || name.find('/') != name.npos ? "" : std::string(name);
}

}

int main(int argumentCount, char** arguments)
{
    TWReport report;
    const std::optional<TWOverwriteLevel> level = levelFromArguments(argumentCount, arguments);
    const std::string name = level ? nameFromPath(arguments[argumentCount - 1]) : "";
    if (name.empty()) {
        report.failure("arguments", Usage);
        return ExitMisused;
    }
    // Otherwise a file beyond the limit on file sizes would kill this process instead of being reported.
    std::signal(SIGXFSZ, SIG_IGN);
    // Sent if another program opens a file while the overwriter holds a lease on it.
    std::signal(SIGIO, SIG_IGN);
    TWHeldSignals signals;
    TWRandom random;
    if (!random.seed()) {
        report.failure(arguments[argumentCount - 1], NoSeed);
        return ExitKept;
    }
    TWOverwriter overwriter(*level, random, signals);
    TWTreeEraser eraser(overwriter, report, signals);
    const bool gone = eraser.erase(name);
    report.finish();
    if (gone)
        return ExitGone;
    signals.release();
    return ExitKept;
}

// eject eject -force PATH: unmounts the volume that is mounted at PATH, also if programs hold files on it open, and
// ejects what it is on. The first word is the action, and there is no other one. Takes about a minute at most. PATH is
// compared byte by byte with the mount table and with the list of gvfs; mounts of the system and those with other
// mounts inside are refused.
//
// Writes what was tried and answered to standard error, one line each. "note:" begins a line that explains no failure,
// and "warning:" one about a loss although the volume is unmounted. Exits with 0 if the volume is unmounted, with 1 if
// it is not, with 2 if it was used in any other way, and with 3 if the volume was only detached and its device is not
// certainly free. A signal ends it at any time, SIGALRM when the time is over; the table and the list are right about
// what was done by then.

#include "TWEjectReport.h"
#include "TWEjector.h"
#include "TWLocationEjector.h"

#include <csignal>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

constexpr char Usage[] = "use as: eject eject -force PATH, with PATH an absolute path";

constexpr int ExitUnmounted = 0;
constexpr int ExitMounted = 1;
constexpr int ExitMisused = 2;
constexpr int ExitStillInUse = 3;

constexpr unsigned Seconds = 58; // after these nothing new is begun
constexpr unsigned LastSeconds = 66; // for what answers to no limit

int exitStatus(TWEjector::Result result)
{
    switch (result) {
    case TWEjector::Result::Unmounted:
        return ExitUnmounted;
    case TWEjector::Result::StillInUse:
        return ExitStillInUse;
    case TWEjector::Result::Mounted:
        break;
    }
    return ExitMounted;
}

}

int main(int argumentCount, char** arguments)
{
    const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    if (words.size() != 3 || words[0] != "eject" || words[1] != "-force" || !words[2].starts_with('/')) {
        TWReport(Usage, {});
        return ExitMisused;
    }
    // A child of ours that hangs must not hold Tidewell's lock, which would keep the next cleaning from starting.
    close_range(STDERR_FILENO + 1, ~0U, 0);
    std::signal(SIGCHLD, SIG_DFL); // if it is ignored, the system does not tell how a child has ended
    std::signal(SIGALRM, SIG_DFL); // a handler would not end a wait for a volume that does not answer
    alarm(LastSeconds);
    const auto location = TWLocationEjector(words[2], std::chrono::seconds(Seconds)).eject();
    return exitStatus(location ? *location : TWEjector(words[2], std::chrono::seconds(Seconds)).eject());
}

#pragma once

#include "platform/linux/TWLinuxUnit.h"
#include "platform/posix/TWDescriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

// What the environment says about the start of the process itself, not of one that it inherits the environment from.
struct TWLinuxOrigin {
    std::string desktopFile; // that it was started from; "" if unknown
    bool isStartedByManager = false; // it is the first process of a service of systemd
    std::string appImage; // that it belongs to; "" if none. A child with another program inherits it as well.
    std::string appFolder; // where that is mounted
    std::string display; // X server of its session; "" if none

    friend bool operator==(const TWLinuxOrigin&, const TWLinuxOrigin&) = default;
};

struct TWLinuxStat {
    pid_t parent = 0;
    pid_t session = 0;
    std::uint64_t start = 0; // in clock ticks since the system started

    friend bool operator==(const TWLinuxStat&, const TWLinuxStat&) = default;
};

// What the kernel says about a process of this user.
struct TWLinuxProcess {
    std::string executable; // its path
    std::vector<std::string> words; // the first ones of its command line
    TWLinuxUnit unit;
    TWLinuxOrigin origin;

    // File names under which users know it: of the executable, of the first word and of the script that it interprets,
    // with and without their endings. Some may be "".
    std::vector<std::string> programNames() const;

    // File name of the script that it interprets, else of the executable.
    std::string programName() const;
};

// The folder of a process in /proc. Stays that of the same process, and reads nothing any more once that has ended,
// even if another one gets its identifier. Any thread.
class TWLinuxProcessFolder final {
public:
    // processes is /proc, opened. Not open if there is no such process.
    TWLinuxProcessFolder(int processes, const char* number);

    bool isOpen() const { return folder_.isOpen(); }
    const std::string& number() const { return number_; } // its identifier
    int descriptor() const { return folder_.get(); }

    // Path of the executable, which may have been deleted; "" for a process of the kernel, for one that has ended and
    // for one that may not be looked at.
    const std::string& executable() const { return executable_; }

    // Whether the executable's path leads Tidewell to the same file. Not so for most processes in a container.
    bool isAmongOurFiles() const;

    // Whether the executable may not be looked at, because the process protects secrets.
    bool isGuarded() const { return isGuarded_; }

    // Whether this is the effective user.
    bool isOwned() const { return isOwned_; }

    // Whether this is both the real and the effective user. Costs more.
    bool isOfThisUser() const;

    std::optional<TWLinuxStat> stat() const;
    TWLinuxUnit unit() const;
    std::optional<TWLinuxOrigin> origin() const; // nothing if it has no environment, as for a moment after exec
    std::vector<std::string> words() const;
    std::string workingFolder() const;

    // Identifier of the Flatpak in whose file system it runs; "" if in none.
    std::string flatpak() const;

    // Reads some kilobytes.
    TWLinuxProcess read() const;

private:
    void readOtherThreads();

    const std::string number_;
    TWDescriptor folder_;
    std::string link_ = "exe"; // that leads to the executable
    std::string executable_;
    bool isDeleted_ = false; // the executable; its path may be that of another file now
    bool isGuarded_ = false;
    bool isOwned_ = false;
};

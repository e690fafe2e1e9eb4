#pragma once

#include "platform/linux/TWLinuxApplications.h"
#include "platform/linux/TWLinuxDesktop.h"
#include "platform/linux/TWLinuxProcessTable.h"

// Why a process is taken for one of an application.
enum class TWLinuxEvidence {
    None,
    Started, // for the application, but it may be a wrapper that only starts its program
    Program, // it runs the application's program
};

// What tells the processes of one application from all others.
struct TWLinuxListedApplication {
    std::string path; // as it was asked for
    std::string desktopFile; // as TWLinuxListedApplications names such files; "" for a program
    std::string identifier; // of the units for it; "" if they may be another application's
    std::string flatpak;
    std::string program; // real path; "" if running it does not mean running the application
    bool isScript = false; // the program
    std::string scriptText; // its beginning
    bool isAppImage = false;
    std::string windowName; // of the windows of its processes, if the program does not tell which these are; else ""
};

// The applications whose copies are looked for. Quitting what nobody has listed would be worse than to miss a copy, so
// only clear evidence counts: never a mere file name, and never a program that several applications of the menus share,
// such as a browser and its web applications, unless the system says for which of them it was started. Several files of
// one application, of which the menus show one, count as this application.
class TWLinuxListedApplications final {
public:
    // Reads many files. Everything must outlive it.
    TWLinuxListedApplications(
        const TWLinuxApplications&, const TWPlaces&, const TWFileSystem&, const std::vector<std::string>& paths);

    const std::vector<TWLinuxListedApplication>& all() const { return listed_; }

    TWLinuxEvidence evidence(
        const TWLinuxListedApplication&, const TWLinuxKnownProcess&, const TWLinuxProcessTable&) const;

    // Whether a process with these windows is one of the application: all of them must have its name.
    bool ownsWindows(
        const TWLinuxListedApplication&, const TWLinuxKnownProcess&, const std::vector<TWLinuxWindow>&) const;

    // Whether the process, though started by its parent, runs an application of its own: what the parent's application
    // does to its processes does not concern it.
    bool isSeparate(const TWLinuxKnownProcess&, const TWLinuxKnownProcess& parent) const;

    // Whether Tidewell may end the process: in a sandbox, its executable must be below the root.
    bool isInReach(const TWLinuxProcessFolder&) const;
    bool isInReach(const TWLinuxKnownProcess&, const TWLinuxProcessTable&) const;

private:
    using Entries = std::vector<TWLinuxApplications::Entry>;

    TWLinuxListedApplication listed(const std::string& path, const Entries&) const;
    void describe(TWLinuxListedApplication&, const TWLinuxApplications::Entry&, const Entries&) const;
    bool meansItsProgram(const TWLinuxApplications::Entry&, const std::string& program, const Entries&) const;
    std::string desktopFile(const std::string& path) const;
    TWLinuxEvidence evidenceOfProgram(
        const TWLinuxListedApplication&, const TWLinuxKnownProcess&, const TWLinuxProcessTable&) const;
    bool isApplication(const TWLinuxKnownProcess&) const;

    const TWLinuxApplications& applications_;
    const TWPlaces& places_;
    const TWFileSystem& fileSystem_;
    const std::set<std::string> ourPrograms_; // Tidewell must not quit itself
    std::set<std::string> programs_; // of the menus' applications that have windows of their own, as real paths
    std::vector<TWLinuxListedApplication> listed_;
};

// Whether the executable is the program behind a script with this path and text, as "/usr/lib/chromium/chromium" is
// behind "/usr/bin/chromium".
bool TWLinuxIsBehindScript(const std::string& script, std::string_view text, const std::string& executable);

// Whether the process is the first one of a unit for the application, or at least was not left behind in it: a
// terminal's unit also holds what the user has started in the terminal.
bool TWLinuxIsFirstOfUnit(const TWLinuxKnownProcess&, const TWLinuxKnownProcess* parent);

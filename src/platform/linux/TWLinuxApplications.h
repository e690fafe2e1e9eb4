#pragma once

#include "platform/TWApplications.h"
#include "platform/TWFileSystem.h"
#include "platform/TWOwnFiles.h"
#include "platform/TWPlaces.h"
#include "platform/linux/TWDesktopEntry.h"

#include <map>
#include <unordered_set>

// The applications of the .desktop files in the user's and the system's data folders, where Flatpak and Snap put theirs
// as well. A file in a nearer folder hides those with the same identifier in the others.
class TWLinuxApplications final : public TWApplications {
public:
    // What the environment says about the session.
    struct Session {
        std::vector<std::string> dataFolders; // of the system, nearest first
        std::vector<std::string> programFolders;
        std::vector<std::string> desktops; // names of the desktop that runs

        // In a sandbox without the data folders in the user's real home.
        static Session current(const TWPlaces&);
    };

    // The file system and the reader of files must outlive it.
    TWLinuxApplications(const TWPlaces&, const TWFileSystem&, const TWOwnFiles&, Session);

    std::vector<TWApplication> installed() const override;
    std::optional<TWApplication> open(const std::string& path, std::string& problem) const override;
    std::string sharedFileList(const TWApplication&) const override;
    std::vector<std::string> preferenceFiles(const TWApplication&) const override;
    TWRunningApplications running() const override;

    struct Entry {
        TWApplication application;
        TWDesktopEntry file;
    };

    // Of all files that describe an application, but not those that hide one.
    std::vector<Entry> entries() const;

    // Of one such file. On failure returns nothing and sets problem to one sentence.
    std::optional<Entry> entry(const std::string& given, std::string& problem) const;

    // Of the file: what desktops call its application.
    std::string identifier(const std::string& path) const;

    // Whether the file is in one of the folders that desktops look into. If so, its identifier names the application,
    // whichever of the folders it is in.
    bool isInstalled(const std::string& path) const;

    // Whether the user can find it in a menu and start it.
    bool isShown(const TWDesktopEntry&) const;

    // Where the program that a command names is: a path, or a name that is searched as a shell does. "" if nowhere.
    std::string programPath(const std::string& program) const;

    // Real path of the program that runs in the end, such as of "soffice" for "libreoffice"; "" if it is not there or
    // is one under which many applications run.
    std::string realProgram(const TWDesktopEntry&) const;

private:
    using Files = std::map<std::string, std::string>; // paths by identifier

    void addFiles(const std::string& folder, const std::string& prefix, int depth,
        std::unordered_set<TWFileIdentity>& visited, Files&) const;
    bool isRunning(const Entry&, const TWRunningApplications&) const;
    std::optional<TWApplication> openProgram(const std::string& path, std::string& problem) const;

    const TWPlaces places_;
    const TWFileSystem& fileSystem_;
    const TWOwnFiles& files_;
    const Session session_;
    const std::vector<std::string> folders_; // of .desktop files, nearest first
};

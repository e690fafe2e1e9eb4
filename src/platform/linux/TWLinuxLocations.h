#pragma once

#include "platform/TWVolumes.h"
#include "platform/linux/TWLinuxMountInfo.h"
#include "platform/linux/TWLinuxPluggedDesktop.h"

#include <chrono>
#include <optional>
#include <set>

// The network folders, phones and cameras that the user has opened with the desktop's service gvfs. To the kernel they
// are folders of one FUSE mount; without that mount, the service is not asked. One thread at a time.
class TWLinuxLocations final {
public:
    using Duration = std::chrono::milliseconds;

    // Without a plug-in nobody is asked, and so nothing is known of the locations.
    TWLinuxLocations(const std::string& desktopPlugIn, Duration patience)
        : asks_(!desktopPlugIn.empty())
        , desktop_(desktopPlugIn)
        , patience_(patience)
    {
    }

    struct Found {
        std::vector<TWVolume> volumes;
        std::vector<std::string> unknownFolders; // nobody has told which locations are in these

        friend bool operator==(const Found&, const Found&) = default;
    };
    Found look(const TWLinuxMounts&);

    // Whether a location may be at the path.
    static bool mayBeAt(const std::string& path, const TWLinuxMounts&);

    // Of a volume that was found. As in TWLinuxDesktop.
    std::optional<std::string> close(const TWVolume&, TWLinuxDesktop::Force, Duration patience);

private:
    bool isNew(const std::string& service);

    const bool asks_;
    TWLinuxPluggedDesktop desktop_;
    const Duration patience_;
    std::set<std::string> foldersInUse_; // those that had locations when the service answered last
    std::string service_; // that answered last
    std::optional<std::chrono::steady_clock::time_point> newSince_; // when it was first met in the place of another
};

#pragma once

#include "platform/TWBackgroundStream.h"
#include "platform/TWFileSystem.h"
#include "platform/TWTreeSizes.h"

// What is right inside a folder, with the sizes of its subfolders. Read in the background; follows no symbolic link and
// changes nothing. Main thread. Destroying it, which is allowed inside its calls, ends the work without a further call.
class TWFolderListing final {
public:
    struct Entry {
        std::string name; // bytes
        TWFileLook look;
        std::optional<std::uint64_t> bytes; // space on disk, with everything inside; nothing while it is not known
        bool tooSmall = false; // something inside could not be read
    };

    static constexpr std::size_t MostEntries = 5000; // the first ones by name

    // Calls changed when something more is known, at most once per turn. No component of the path may be a symbolic
    // link. The file system must outlive the run loop's background work.
    TWFolderListing(TWRunLoop&, const TWFileSystem&, const std::string& realPath, std::function<void()> changed);

    const std::vector<Entry>& entries() const { return entries_; } // sorted by the bytes of the name
    std::size_t left() const { return left_; } // so many more entries are not listed
    int error() const { return error_; } // the errno if the folder could not be read, else 0
    bool ended() const { return ended_; }

private:
    struct Part {
        std::vector<Entry> entries; // all of them, or none
        std::vector<std::pair<std::size_t, TWTreeSize>> sizes; // of entries, by their index
        std::size_t left = 0;
        int error = 0;
    };
    class Reading;

    void take(Part);
    void notifyLater();

    TWRunLoop& runLoop_;
    const std::function<void()> changed_;
    std::vector<Entry> entries_;
    std::size_t left_ = 0;
    int error_ = 0;
    bool ended_ = false;
    std::unique_ptr<TWRunLoopHandle> notification_;
    std::unique_ptr<TWBackgroundStream<Part>> reading_;
};

#include "app/TWFolderListing.h"

#include "support/TWPath.h"

#include <algorithm>

namespace {

constexpr std::size_t PartsPerTurn = 256;

}

// Another thread.
class TWFolderListing::Reading final {
public:
    Reading(const TWFileSystem& fileSystem, const std::string& path, TWBackgroundStream<Part>::Sink& sink)
        : fileSystem_(fileSystem)
        , path_(path)
        , sink_(sink)
    {
    }

    void read()
    {
        int error = 0;
        const auto folder = fileSystem_.openFolder(path_, error, &sink_.cancellation());
        if (!folder) {
            sink_.put({ {}, {}, 0, error });
            return;
        }
        auto found = folder->entries();
        std::ranges::sort(found, {}, &TWFolderEntry::name);
        Part part;
        part.left = found.size() - std::min(found.size(), MostEntries);
        found.resize(found.size() - part.left);
        for (const auto& entry : found) {
            if (sink_.cancellation().cancelled())
                return;
            part.entries.push_back(look(*folder, entry));
        }
        sink_.put(std::move(part));
        addUpFolders();
    }

private:
    Entry look(const TWOpenFolder& folder, const TWFolderEntry& entry)
    {
        Entry listed{ std::string(entry.name), folder.look(entry), {}, false };
        if (listed.look.isFolder()) {
            folders_.push_back(index_);
            paths_.push_back(TWPath::join(path_, entry.name));
        } else if (listed.look.isThere()) {
            listed.bytes = listed.look.facts.bytes;
        }
        ++index_;
        return listed;
    }

    void addUpFolders()
    {
        TWAddUpTrees(fileSystem_, std::move(paths_), sink_.cancellation(), TWAllCores,
            [this](std::size_t first, std::span<const TWTreeSize> sizes) {
                Part part;
                for (const auto& size : sizes)
                    part.sizes.emplace_back(folders_[first++], size);
                sink_.put(std::move(part));
            });
    }

    const TWFileSystem& fileSystem_;
    const std::string& path_;
    TWBackgroundStream<Part>::Sink& sink_;
    std::size_t index_ = 0; // of the next entry
    std::vector<std::size_t> folders_; // indexes of the entries that are folders
    std::vector<std::string> paths_; // theirs
};

TWFolderListing::TWFolderListing(
    TWRunLoop& runLoop, const TWFileSystem& fileSystem, const std::string& realPath, std::function<void()> changed)
    : runLoop_(runLoop)
    , changed_(std::move(changed))
    , reading_(std::make_unique<TWBackgroundStream<Part>>(
          runLoop, PartsPerTurn, [&fileSystem, realPath](auto& sink) { Reading(fileSystem, realPath, sink).read(); },
          [this](Part part) { take(std::move(part)); },
          [this] {
              ended_ = true;
              notifyLater();
          }))
{
}

void TWFolderListing::take(Part part)
{
    if (!part.entries.empty())
        entries_ = std::move(part.entries);
    for (const auto& [index, size] : part.sizes) {
        entries_[index].bytes = size.bytes;
        entries_[index].tooSmall = size.unknown > 0;
    }
    left_ += part.left;
    error_ = part.error != 0 ? part.error : error_;
    notifyLater();
}

// Once for all parts of a turn.
void TWFolderListing::notifyLater()
{
    if (!notification_)
        notification_ = runLoop_.after(TWRunLoop::Duration(0), [this] {
            notification_.reset();
            const auto call = changed_;
            call();
        });
}

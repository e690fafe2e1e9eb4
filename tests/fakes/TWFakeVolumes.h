#pragma once

#include "platform/TWVolumes.h"

#include <algorithm>
#include <map>

// Has the volumes that a test mounts and unmounts. Each watch hears of it a second later.
class TWFakeVolumes final : public TWVolumes {
    struct Watch;

public:
    std::vector<TWVolume> hidden; // mounted as well, but no file manager shows them
    std::map<std::string, TWVolumeUse> uses; // by path, also of volumes that were unmounted
    std::map<std::string, std::uint64_t> space; // by path
    bool readable = true;
    std::vector<std::string> unknown; // folders of a service that does not answer
    std::function<void()> atLook = [] {}; // what happens while the free space of a volume is asked for

    void mount(const std::string& path, const std::string& device = "/dev/sdb1")
    {
        shown_.push_back({ path, device, ++mounts_, 0x811 });
        change();
    }
    // Only the topmost one at this path.
    void unmount(const std::string& path)
    {
        const auto top
            = std::find_if(shown_.rbegin(), shown_.rend(), [&](const auto& volume) { return volume.path == path; });
        if (top == shown_.rend())
            return;
        shown_.erase(std::prev(top.base()));
        change();
    }

    std::optional<std::vector<TWVolume>> mountedVolumes() override
    {
        std::vector<TWVolume> volumes;
        for (const auto& volume : shown_) {
            std::erase_if(volumes, [&](const auto& other) { return other.path == volume.path; });
            volumes.push_back(volume);
        }
        return readable ? std::optional(volumes) : std::nullopt;
    }
    std::optional<std::vector<TWVolume>> allMounts() override
    {
        auto mounts = hidden;
        mounts.insert(mounts.end(), shown_.begin(), shown_.end());
        return readable ? std::optional(mounts) : std::nullopt;
    }
    std::vector<std::string> unknownFolders() const override { return unknown; }
    std::unique_ptr<TWRunLoopHandle> watch(TWRunLoop& runLoop, std::function<void()> changed) override
    {
        return std::make_unique<Watch>(watches_, runLoop, std::move(changed));
    }
    TWVolumeUse use(const TWVolume& volume, const TWCancellation&) const override
    {
        const auto found = uses.find(volume.path);
        return found == uses.end() ? TWVolumeUse() : found->second;
    }
    std::optional<std::uint64_t> freeBytes(const TWVolume& volume) const override
    {
        atLook();
        const auto found = space.find(volume.path);
        return found == space.end() ? std::nullopt : std::optional(found->second);
    }

private:
    struct Watch final : TWRunLoopHandle {
        Watch(std::vector<Watch*>& all, TWRunLoop& givenRunLoop, std::function<void()> call)
            : watches(all)
            , runLoop(givenRunLoop)
            , changed(std::move(call))
        {
            watches.push_back(this);
        }
        ~Watch() override { std::erase(watches, this); }
        void report()
        {
            gathering.reset();
            const auto call = changed; // may destroy this object
            call();
        }

        std::vector<Watch*>& watches;
        TWRunLoop& runLoop;
        const std::function<void()> changed;
        std::unique_ptr<TWRunLoopHandle> gathering;
    };

    void change()
    {
        for (auto* watch : watches_) {
            if (!watch->gathering)
                watch->gathering = watch->runLoop.after(std::chrono::seconds(1), [watch] { watch->report(); });
        }
    }

    std::vector<TWVolume> shown_;
    std::vector<Watch*> watches_;
    std::uint64_t mounts_ = 100;
};

#include "cleaners/TWPlanSizes.h"

#include "platform/TWTreeSizes.h"

#include <algorithm>

namespace {

constexpr std::size_t FoldersTogether = 64; // few enough for sizes to come soon

}

TWPlanSizes::TWPlanSizes(
    TWRunLoop& runLoop, const TWFileSystem& fileSystem, std::shared_ptr<const TWPlan> plan, std::function<void()> ended)
    : plan_(std::move(plan))
    , bytes_(plan_->items.size())
{
    std::vector<std::size_t> folders;
    for (std::size_t item = 0; item < bytes_.size(); ++item) {
        const auto& planned = plan_->items[item];
        if (planned.quiet)
            continue;
        if (planned.facts.kind == TWFileKind::Folder)
            folders.push_back(item);
        else
            total_ += bytes_[item] = planned.facts.bytes;
    }
    adding_ = std::make_unique<TWBackgroundStream<std::vector<Size>>>(
        runLoop, 1,
        [plan = plan_, folders = std::move(folders), &fileSystem](auto& sink) {
            for (std::size_t start = 0; start < folders.size(); start += FoldersTogether) {
                const auto end = std::min(start + FoldersTogether, folders.size());
                std::vector<std::string> paths;
                for (auto index = start; index < end; ++index)
                    paths.push_back(plan->realPath(plan->items[folders[index]]));
                const auto sizes = TWAddUpTrees(fileSystem, std::move(paths), sink.cancellation());
                std::vector<Size> known;
                for (auto index = start; index < end; ++index) {
                    const auto& size = sizes.sizes[index - start];
                    known.push_back({ folders[index], size.bytes,
                        sizes.end == TWWalkEnd::Complete && size.unknown == 0 && size.items > 0 });
                }
                if (sink.cancellation().cancelled())
                    return;
                sink.put(std::move(known));
            }
        },
        [this](const std::vector<Size>& known) { take(known); },
        [this, ended = std::move(ended)] {
            complete_ = allKnown_;
            ended();
        });
}

void TWPlanSizes::take(const std::vector<Size>& known)
{
    for (const auto& size : known) {
        bytes_[size.item] = size.bytes;
        total_ += size.bytes;
        allKnown_ = allKnown_ && size.complete;
    }
}

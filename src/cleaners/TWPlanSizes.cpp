#include "cleaners/TWPlanSizes.h"

#include "platform/TWTreeSizes.h"

#include <algorithm>

namespace {

constexpr std::size_t FoldersTogether = 64; // few enough for sizes to come soon

struct Folder {
    std::size_t position;
    std::size_t item;
};

}

TWPlanSizes::TWPlanSizes(TWRunLoop& runLoop, const TWFileSystem& fileSystem, const std::shared_ptr<const TWPlan>& plan,
    const std::vector<std::size_t>& items, std::function<void()> ended)
    : bytes_(items.size())
{
    std::vector<Folder> folders;
    for (std::size_t position = 0; position < items.size(); ++position) {
        const auto& facts = plan->items[items[position]].facts;
        if (facts.kind == TWFileKind::Folder)
            folders.push_back({ position, items[position] });
        else
            total_ += bytes_[position] = facts.bytes;
    }
    adding_ = std::make_unique<TWBackgroundStream<std::vector<Size>>>(
        runLoop, 1,
        [plan, folders = std::move(folders), &fileSystem](auto& sink) {
            for (std::size_t start = 0; start < folders.size(); start += FoldersTogether) {
                const auto end = std::min(start + FoldersTogether, folders.size());
                std::vector<std::string> paths;
                for (auto index = start; index < end; ++index)
                    paths.push_back(plan->realPath(plan->items[folders[index].item]));
                const auto sums = TWAddUpTrees(fileSystem, std::move(paths), sink.cancellation());
                if (sink.cancellation().cancelled())
                    return;
                std::vector<Size> sizes;
                for (auto index = start; index < end; ++index) {
                    const auto& sum = sums.sizes[index - start];
                    const bool complete = sums.end == TWWalkEnd::Complete && sum.unknown == 0 && sum.items > 0;
                    sizes.push_back({ folders[index].position, sum.bytes, complete });
                }
                sink.put(std::move(sizes));
            }
        },
        [this](const std::vector<Size>& sizes) { take(sizes); },
        [this, ended = std::move(ended)] {
            complete_ = allKnown_;
            ended();
        });
}

void TWPlanSizes::take(const std::vector<Size>& sizes)
{
    for (const auto& size : sizes) {
        bytes_[size.position] = size.bytes;
        total_ += size.bytes;
        allKnown_ = allKnown_ && size.complete;
    }
}

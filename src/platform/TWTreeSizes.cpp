#include "platform/TWTreeSizes.h"

#include <cerrno>
#include <unordered_set>
#include <utility>

namespace {

// The part of one tree that one thread has added up.
struct Part {
    struct File {
        std::uint64_t inode;
        std::uint64_t bytes;
    };

    std::size_t tree = 0;
    TWTreeSize size;
    std::vector<File> withSeveralNames; // their bytes are not yet included in size
};

class Parts final {
public:
    Part& of(std::size_t tree)
    {
        if (parts_.empty() || parts_.back().tree != tree)
            parts_.push_back({ tree, {}, {} });
        return parts_.back();
    }

    void count(std::size_t tree, const TWFileFacts& facts)
    {
        auto& part = of(tree);
        ++part.size.items;
        if (facts.kind == TWFileKind::Folder || facts.links <= 1) {
            part.size.bytes += facts.bytes;
            return;
        }
        part.withSeveralNames.push_back({ facts.identity.inode, facts.bytes });
        ++filesWithSeveralNames_;
    }

    std::size_t size() const { return parts_.size() + filesWithSeveralNames_; }
    const std::vector<Part>& parts() const { return parts_; }

private:
    std::vector<Part> parts_;
    std::size_t filesWithSeveralNames_ = 0;
};

class SizeVisitor final : public TWTreeVisitor<Parts> {
public:
    TWWalkStep visitRoot(std::size_t root, const TWFileLook& found, Parts& parts) const override
    {
        if (found.isThere())
            parts.count(root, found.facts);
        else if (found.presence == TWPresence::Unknown)
            ++parts.of(root).size.unknown;
        return found.isFolder() ? TWWalkStep::Enter : TWWalkStep::PassOver;
    }

    TWWalkStep visit(const TWWalkedFolder& folder, const TWFolderEntry& entry, Parts& parts) const override
    {
        const auto found = folder.folder().look(entry);
        if (!found.isThere()) {
            if (found.presence == TWPresence::Unknown)
                ++parts.of(folder.root()).size.unknown;
            return TWWalkStep::PassOver;
        }
        if (found.facts.identity.device != folder.device()) {
            ++parts.of(folder.root()).size.items;
            return TWWalkStep::PassOver;
        }
        parts.count(folder.root(), found.facts);
        return TWWalkStep::Enter;
    }

    void notEntered(std::size_t root, const std::string&, int error, Parts& parts) const override
    {
        // What is mounted inside does not belong to the tree, and what has been deleted in the meantime takes no space.
        if (error != EXDEV && error != ENOENT)
            ++parts.of(root).size.unknown;
    }
};

// The parts of a tree arrive one after the other, so only the inodes of one tree need to be remembered at a time.
class Total final {
public:
    Total(std::vector<TWTreeSize>& sizes, const TWTreesSized& sized)
        : sizes_(sizes)
        , sized_(sized)
    {
    }

    void add(const Part& part)
    {
        if (std::exchange(tree_, part.tree) != part.tree)
            counted_.clear();
        auto& size = sizes_[part.tree];
        size.items += part.size.items;
        size.bytes += part.size.bytes;
        size.unknown += part.size.unknown;
        for (const auto& file : part.withSeveralNames) {
            if (counted_.insert(file.inode).second)
                size.bytes += file.bytes;
        }
    }

    // The trees before end are final.
    void tell(std::size_t end)
    {
        if (sized_ && end > told_)
            sized_(told_, std::span<const TWTreeSize>(sizes_).subspan(told_, end - told_));
        told_ = end;
    }
    void tellBeforeCurrent() { tell(tree_); }

private:
    std::vector<TWTreeSize>& sizes_;
    const TWTreesSized& sized_;
    std::size_t told_ = 0; // trees
    std::size_t tree_ = 0;
    std::unordered_set<std::uint64_t> counted_; // inodes of files with several hard links
};

}

TWTreeSize TWTreeSizes::total() const
{
    TWTreeSize total;
    for (const auto& size : sizes) {
        total.items += size.items;
        total.bytes += size.bytes;
        total.unknown += size.unknown;
    }
    return total;
}

TWTreeSizes TWAddUpTrees(const TWFileSystem& fileSystem, std::vector<std::string> paths,
    const TWCancellation& cancellation, unsigned threads, const TWTreesSized& sized)
{
    TWTreeSizes result;
    result.sizes.resize(paths.size());
    Total total(result.sizes, sized);
    const auto receive = [&total](const Parts& parts) {
        for (const auto& part : parts.parts())
            total.add(part);
        total.tellBeforeCurrent();
    };
    result.end = TWWalkTrees(
        fileSystem, { std::move(paths), TWLinkAtEnd::DoNotFollow }, SizeVisitor(), receive, cancellation, threads);
    if (result.end == TWWalkEnd::Complete)
        total.tell(result.sizes.size());
    return result;
}

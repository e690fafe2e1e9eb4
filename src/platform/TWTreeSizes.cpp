#include "platform/TWTreeSizes.h"

#include <cerrno>
#include <unordered_map>
#include <utility>

namespace {

constexpr std::uint64_t UnknownEntry = 0x9E3779B97F4A7C15U;

// Spreads every bit of the value over the whole result, so that sums of results hardly ever agree by accident.
std::uint64_t mixed(std::uint64_t value)
{
    value = (value ^ (value >> 30U)) * 0xBF58476D1CE4E5B9U;
    value = (value ^ (value >> 27U)) * 0x94D049BB133111EBU;
    return value ^ (value >> 31U);
}

std::uint64_t mixed(std::uint64_t before, std::uint64_t value)
{
    return mixed(mixed(before) + UnknownEntry + value);
}

// The part of one tree that one thread has added up.
struct Part {
    struct File {
        std::uint64_t inode;
        std::uint64_t bytes;
        std::uint32_t links;
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
        part.size.print.add(facts);
        if (facts.kind == TWFileKind::Folder || facts.links <= 1) {
            part.size.bytes += facts.bytes;
            return;
        }
        part.withSeveralNames.push_back({ facts.identity.inode, facts.bytes, facts.links });
        ++filesWithSeveralNames_;
    }

    void countUnknown(std::size_t tree)
    {
        auto& size = of(tree).size;
        ++size.unknown;
        size.print.addUnknown();
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
            parts.countUnknown(root);
        return found.isFolder() ? TWWalkStep::Enter : TWWalkStep::PassOver;
    }

    TWWalkStep visit(const TWWalkedFolder& folder, const TWFolderEntry& entry, Parts& parts) const override
    {
        const auto found = folder.folder().look(entry);
        if (!found.isThere()) {
            if (found.presence == TWPresence::Unknown)
                parts.countUnknown(folder.root());
            return TWWalkStep::PassOver;
        }
        if (found.facts.identity.device != folder.device()) {
            auto& size = parts.of(folder.root()).size;
            ++size.items;
            size.print.add(found.facts);
            return TWWalkStep::PassOver;
        }
        parts.count(folder.root(), found.facts);
        return TWWalkStep::Enter;
    }

    void notEntered(std::size_t root, const std::string&, int error, Parts& parts) const override
    {
        // What is mounted inside does not belong to the tree, and what has been deleted in the meantime takes no space.
        if (error != EXDEV && error != ENOENT)
            parts.countUnknown(root);
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
        size.print += part.size.print;
        for (const auto& file : part.withSeveralNames)
            addName(size, file);
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
    void addName(TWTreeSize& size, const Part::File& file)
    {
        const auto names = ++counted_[file.inode];
        if (names == 1) {
            size.bytes += file.bytes;
            size.shared += file.bytes;
        }
        if (names == file.links)
            size.shared -= file.bytes;
    }

    std::vector<TWTreeSize>& sizes_;
    const TWTreesSized& sized_;
    std::size_t told_ = 0; // trees
    std::size_t tree_ = 0;
    std::unordered_map<std::uint64_t, std::uint32_t> counted_; // names met, by inode, of files with several hard links
};

}

void TWTreePrint::add(const TWFileFacts& facts)
{
    const auto entry
        = mixed(mixed(facts.identity.device, facts.identity.inode), static_cast<std::uint64_t>(facts.kind));
    if (facts.kind == TWFileKind::Folder) {
        exact += entry;
        contents += entry;
        return;
    }
    const auto sized = mixed(entry, facts.size);
    exact += mixed(sized, static_cast<std::uint64_t>(facts.changed));
    contents += mixed(sized, static_cast<std::uint64_t>(facts.modified));
    severalNames = severalNames || facts.links > 1;
}

void TWTreePrint::addUnknown()
{
    exact += UnknownEntry;
    contents += UnknownEntry;
}

TWTreePrint& TWTreePrint::operator+=(const TWTreePrint& other)
{
    exact += other.exact;
    contents += other.contents;
    severalNames = severalNames || other.severalNames;
    return *this;
}

TWTreePrint& TWTreePrint::operator-=(const TWTreePrint& other)
{
    exact -= other.exact;
    contents -= other.contents;
    return *this;
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

#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWRunLoop.h"

#include <type_traits>

// Goes through directory trees on all cores. Whatever the number of threads, the results arrive in the order of a
// single-threaded depth-first walk. A walk never follows a link below a root, never enters another file system, and
// needs few descriptors and little stack however deep or wide a tree is.

// PassOver leaves out what is in a folder. Only folders are entered; for anything else the two mean the same.
enum class TWWalkStep : std::uint8_t { PassOver, Enter };

// After Cancelled and Failed only part of the results has been received. Failed: memory ran out, or a function given to
// the walk threw an exception.
enum class TWWalkEnd : std::uint8_t { Complete, Cancelled, Failed };

struct TWWalkRoots {
    std::vector<std::string> paths; // absolute; links on the way to the last component are followed
    TWLinkAtEnd linkAtEnd = TWLinkAtEnd::DoNotFollow; // whether a root that is a link stands for what it points to
};

// The folder whose entries are being visited. Valid during the call.
class TWWalkedFolder final {
public:
    TWWalkedFolder(const TWOpenFolder& folder, const std::string& path, std::size_t root, std::uint64_t device)
        : folder_(folder)
        , path_(path)
        , root_(root)
        , device_(device)
    {
    }

    const TWOpenFolder& folder() const { return folder_; }

    // Begins with the root's path as it was given.
    const std::string& path() const { return path_; }
    std::string pathOf(const TWFolderEntry&) const;

    std::size_t root() const { return root_; } // index in the paths of the roots
    std::uint64_t device() const { return device_; } // of the root: an entry on another one is not entered

    // Asks the disk once, however many entries are visited.
    bool isPackage() const;

private:
    const TWOpenFolder& folder_;
    const std::string& path_;
    std::size_t root_;
    std::uint64_t device_;
    mutable std::optional<bool> isPackage_;
};

// Looks at what a walk meets and notes what it finds in an Output, which can be default-constructed and moved and has a
// size(): the number of results in it. The walk calls it on several threads at once, each with an Output of its own.
template <typename Output>
class TWTreeVisitor {
public:
    // A root, before it is entered. If it is to be entered and is no folder, notEntered() is called.
    virtual TWWalkStep visitRoot(std::size_t /*root*/, const TWFileLook&, Output&) const { return TWWalkStep::Enter; }

    virtual TWWalkStep visit(const TWWalkedFolder&, const TWFolderEntry&, Output&) const = 0;

    // A folder or root that was to be entered could not be opened or listed. error is the errno; EXDEV: something is
    // mounted there.
    virtual void notEntered(std::size_t root, const std::string& path, int error, Output&) const = 0;

protected:
    ~TWTreeVisitor() = default;
};

constexpr unsigned TWAllCores = 0;

// Walks the roots one after the other and returns when all is visited and received, or when cancelled. receive gets the
// outputs in order, one call at a time, on any of the walk's threads, early ones while later folders are still being
// read. Nothing is called any more after the return. Any thread.
template <typename Output>
TWWalkEnd TWWalkTrees(const TWFileSystem&, const TWWalkRoots&, const TWTreeVisitor<Output>&,
    const std::type_identity_t<std::function<void(Output)>>& receive, const TWCancellation&,
    unsigned threads = TWAllCores);

// The rest is the way from the above to the walk itself, which does not know the type of the outputs.

class TWWalkJob {
public:
    class Results {
    public:
        virtual ~Results() = default;
        virtual std::size_t size() const = 0;
    };

    virtual std::unique_ptr<Results> newResults() const = 0;
    virtual TWWalkStep visitRoot(std::size_t root, const TWFileLook&, Results&) const = 0;
    virtual TWWalkStep visit(const TWWalkedFolder&, const TWFolderEntry&, Results&) const = 0;
    virtual void notEntered(std::size_t root, const std::string& path, int error, Results&) const = 0;
    virtual void receive(Results&) = 0;

protected:
    ~TWWalkJob() = default;
};

template <typename Output>
class TWWalkJobOf final : public TWWalkJob {
public:
    using Receiver = std::function<void(Output)>;

    TWWalkJobOf(const TWTreeVisitor<Output>& visitor, const Receiver& receiver)
        : visitor_(visitor)
        , receiver_(receiver)
    {
    }

    std::unique_ptr<Results> newResults() const override { return std::make_unique<Holder>(); }
    TWWalkStep visitRoot(std::size_t root, const TWFileLook& found, Results& results) const override
    {
        return visitor_.visitRoot(root, found, output(results));
    }
    TWWalkStep visit(const TWWalkedFolder& folder, const TWFolderEntry& entry, Results& results) const override
    {
        return visitor_.visit(folder, entry, output(results));
    }
    void notEntered(std::size_t root, const std::string& path, int error, Results& results) const override
    {
        visitor_.notEntered(root, path, error, output(results));
    }
    void receive(Results& results) override { receiver_(std::move(output(results))); }

private:
    struct Holder final : Results {
        std::size_t size() const override { return output.size(); }
        Output output;
    };
    static Output& output(Results& results) { return static_cast<Holder&>(results).output; }

    const TWTreeVisitor<Output>& visitor_;
    const Receiver& receiver_;
};

TWWalkEnd TWWalkTrees(const TWFileSystem&, const TWWalkRoots&, TWWalkJob&, const TWCancellation&, unsigned threads);

template <typename Output>
TWWalkEnd TWWalkTrees(const TWFileSystem& fileSystem, const TWWalkRoots& roots, const TWTreeVisitor<Output>& visitor,
    const std::type_identity_t<std::function<void(Output)>>& receive, const TWCancellation& cancellation,
    unsigned threads)
{
    TWWalkJobOf<Output> job(visitor, receive);
    return TWWalkTrees(fileSystem, roots, job, cancellation, threads);
}

#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWRunLoop.h"

#include <type_traits>

// Walks directory trees on all cores. Whatever the number of threads, the results arrive in the order of a
// single-threaded depth-first walk. A walk never follows a symbolic link below a root, never enters another file
// system, and needs few descriptors and little stack however deep or wide a tree is.

// What to do with an entry: PassOver skips the contents of a folder. For anything but a folder the two mean the same.
enum class TWWalkStep : std::uint8_t { PassOver, Enter };

// After Cancelled and Failed only part of the results has been received. Failed means that memory ran out or that a
// function passed to the walk threw an exception.
enum class TWWalkEnd : std::uint8_t { Complete, Cancelled, Failed };

struct TWWalkRoots {
    std::vector<std::string> paths; // absolute; symbolic links before the last component are followed
    TWLinkAtEnd linkAtEnd = TWLinkAtEnd::DoNotFollow; // whether a root that is a symbolic link stands for its target
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

    // Begins with the root's path as given in TWWalkRoots.
    const std::string& path() const { return path_; }
    std::string pathOf(const TWFolderEntry&) const;

    std::size_t root() const { return root_; } // index into TWWalkRoots::paths
    std::uint64_t device() const { return device_; } // of the root; entries on other devices are not entered

    // Like TWOpenFolder::isPackage(), but determined only once.
    bool isPackage() const;

private:
    const TWOpenFolder& folder_;
    const std::string& path_;
    std::size_t root_;
    std::uint64_t device_;
    mutable std::optional<bool> isPackage_;
};

// Decides what a walk enters and collects results in an Output, which must be default-constructible and movable and
// whose size() is the number of results in it. The walk calls the visitor on several threads at once, each with an
// Output of its own.
template <typename Output>
class TWTreeVisitor {
public:
    // Called for a root before it is entered. If this returns Enter and the root is not a folder, notEntered() is
    // called.
    virtual TWWalkStep visitRoot(std::size_t /*root*/, const TWFileLook&, Output&) const { return TWWalkStep::Enter; }

    virtual TWWalkStep visit(const TWWalkedFolder&, const TWFolderEntry&, Output&) const = 0;

    // Called if a folder or root that was to be entered could not be opened or listed. error is the errno, EXDEV if
    // something is mounted there.
    virtual void notEntered(std::size_t root, const std::string& path, int error, Output&) const = 0;

protected:
    ~TWTreeVisitor() = default;
};

constexpr unsigned TWAllCores = 0;

// Walks the roots and returns when everything has been visited and received, or when cancelled. Passes the outputs to
// receive in order, one call at a time, on any of the walk's threads, while later folders are still being read. Calls
// nothing after it has returned. Any thread.
template <typename Output>
TWWalkEnd TWWalkTrees(const TWFileSystem&, const TWWalkRoots&, const TWTreeVisitor<Output>&,
    const std::type_identity_t<std::function<void(Output)>>& receive, const TWCancellation&,
    unsigned threads = TWAllCores);

// The rest of this header hides the type of the outputs from the walk itself, which is not a template.

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

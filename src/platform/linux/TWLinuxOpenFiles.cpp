#include "platform/linux/TWLinuxOpenFiles.h"

#include "platform/TWRunLoop.h"
#include "platform/linux/TWLinuxFacts.h"
#include "platform/linux/TWLinuxProcesses.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <map>

namespace {

constexpr std::size_t MostFiles = 10'000;
constexpr std::string_view Deleted = " (deleted)";
constexpr std::string_view Memory = "/memfd:"; // begins the names of files that were never in a folder

// Where the file of a descriptor was, or "" if it was not deleted. Asks no file system, so that one that hangs does no
// harm.
std::string pathOfDeleted(int descriptors, const char* number)
{
    char target[PATH_MAX];
    const auto length = readlinkat(descriptors, number, target, sizeof target);
    const std::string_view path(target, length > 0 ? static_cast<std::size_t>(length) : 0);
    const bool isDeleted = path.starts_with('/') && path.ends_with(Deleted) && !path.starts_with(Memory);
    return isDeleted ? std::string(path.substr(0, path.size() - Deleted.size())) : "";
}

// Collects the files that processes have open, each once.
class Collector {
public:
    explicit Collector(const TWCancellation& cancellation)
        : cancellation_(cancellation)
    {
    }

    bool isDone() const { return cancellation_.cancelled() || files_.size() >= MostFiles; }
    void add(const TWLinuxProcessFolder&);
    std::vector<TWDeletedFile> files() const;

private:
    TWDeletedFile* fileOf(int descriptors, const char* number);

    const TWCancellation& cancellation_;
    std::map<std::pair<std::uint64_t, std::uint64_t>, TWDeletedFile> files_; // by device and inode
};

void Collector::add(const TWLinuxProcessFolder& process)
{
    const int folder = openat(process.descriptor(), "fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::unique_ptr<DIR, int (*)(DIR*)> descriptors(folder < 0 ? nullptr : fdopendir(folder), closedir);
    std::string program;
    while (const dirent* entry = descriptors && !isDone() ? readdir(descriptors.get()) : nullptr) {
        auto* file = fileOf(dirfd(descriptors.get()), entry->d_name);
        if (!file)
            continue;
        if (program.empty())
            program = process.read().programName();
        if (std::find(file->programs.begin(), file->programs.end(), program) == file->programs.end())
            file->programs.push_back(program);
    }
}

// nullptr if it is not a deleted file. A file with another name is not: its space stays taken.
TWDeletedFile* Collector::fileOf(int descriptors, const char* number)
{
    auto path = pathOfDeleted(descriptors, number);
    struct stat found;
    if (path.empty() || fstatat(descriptors, number, &found, 0) != 0)
        return nullptr;
    const auto facts = TWFactsFrom(found);
    if (facts.kind != TWFileKind::File || facts.links > 0)
        return nullptr;
    auto& file = files_[{ facts.identity.device, facts.identity.inode }];
    if (file.path.empty())
        file = { std::move(path), facts.identity, facts.bytes, {} };
    return &file;
}

std::vector<TWDeletedFile> Collector::files() const
{
    std::vector<TWDeletedFile> sorted;
    for (const auto& [identity, file] : files_) {
        sorted.push_back(file);
        std::sort(sorted.back().programs.begin(), sorted.back().programs.end());
    }
    std::stable_sort(
        sorted.begin(), sorted.end(), [](const auto& one, const auto& other) { return one.path < other.path; });
    return sorted;
}

}

std::vector<TWDeletedFile> TWLinuxOpenFiles::deletedFiles(const TWCancellation& cancellation) const
{
    Collector collector(cancellation);
    TWLinuxForEachOwnProcess([&](const TWLinuxProcessFolder& process) {
        collector.add(process);
        return !collector.isDone();
    });
    return collector.files();
}

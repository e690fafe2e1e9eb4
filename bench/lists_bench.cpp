// For lists.py: reads a list or a settings file as Tidewell does. Prints "read", "refused" or "missing", the seconds
// that it took, the peak memory of the process in kB, and the problem.
//
//     lists_bench rules|words|settings FILE          followed by "write" to write it again afterwards

#include "cleaners/TWFilesRule.h"
#include "editors/TWDictionaryWord.h"
#include "platform/posix/TWFileUserDefaults.h"
#include "platform/posix/TWPosixOwnFiles.h"
#include "settings/TWRecordList.h"
#include "support/TWPath.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>

namespace {

class NoBundle final : public TWBundle {
public:
    explicit NoBundle(std::string folder)
        : folder_(std::move(folder))
    {
    }
    std::string info(const std::string&) const override { return folder_; }
    std::string resourcePath(const std::string&) const override { return ""; }
    std::string identifier() const override { return ""; }

private:
    std::string folder_;
};

class NoRunLoop final : public TWRunLoop {
public:
    Clock::time_point now() const override { return {}; }
    void post(std::function<void()>) override { }
    std::unique_ptr<TWRunLoopHandle> after(Duration, std::function<void()>) override { return nullptr; }
    std::unique_ptr<TWRunLoopHandle> every(Duration, std::function<void()>) override { return nullptr; }
    std::unique_ptr<TWRunLoopHandle> whenReadable(int, std::function<void()>) override { return nullptr; }
    std::unique_ptr<TWRunLoopHandle> inBackground(Work, std::function<void()>) override { return nullptr; }
    void turn(Duration) override { }
};

// Not getrusage(), which includes the memory of the parent process before exec().
long mostMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmHWM:"))
            return std::atol(line.c_str() + 6);
    }
    return -1;
}

void print(std::chrono::steady_clock::time_point start, const char* outcome, const std::string& problem)
{
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    std::printf("%s %.3f %ld %s\n", outcome, taken.count(), mostMemory(), problem.c_str());
}

template <typename Record>
int runList(const std::string& path, bool write)
{
    const TWPosixOwnFiles ownFiles;
    const TWPlaces places;
    const NoBundle bundle{ std::string(TWPath::parent(path)) };
    const TWDataFolder folder(ownFiles, places, bundle);
    const auto start = std::chrono::steady_clock::now();
    TWRecordList<Record> list(
        folder, std::string(TWPath::lastComponent(path)), [](auto, const auto& live) { return live; });
    const TWListState state = list.load();
    print(start,
        state == TWListState::Saved         ? "read"
            : state == TWListState::Missing ? "missing"
                                            : "refused",
        list.problem());
    if (!write)
        return 0;
    const auto writing = std::chrono::steady_clock::now();
    const std::string problem = list.write();
    print(writing, problem.empty() ? "written" : "refused", problem);
    return 0;
}

int runSettings(const std::string& path)
{
    const TWPosixOwnFiles ownFiles;
    NoRunLoop runLoop;
    const auto start = std::chrono::steady_clock::now();
    const TWFileUserDefaults settings(ownFiles, runLoop, path);
    print(start, settings.problem().empty() ? "read" : "refused", settings.problem());
    return 0;
}

}

int main(int argumentCount, char** arguments)
{
    const std::string kind = argumentCount >= 3 ? arguments[1] : "";
    const bool write = argumentCount == 4 && std::string(arguments[3]) == "write";
    if (kind == "rules")
        return runList<TWFilesRule>(arguments[2], write);
    if (kind == "words")
        return runList<TWDictionaryWord>(arguments[2], write);
    if (kind == "settings")
        return runSettings(arguments[2]);
    std::fprintf(stderr, "usage: lists_bench rules|words|settings FILE [write]\n");
    return 2;
}

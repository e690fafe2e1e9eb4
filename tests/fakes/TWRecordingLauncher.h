#pragma once

#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"
#include "platform/posix/TWDescriptor.h"
#include "support/TWPath.h"

#include <cerrno>
#include <filesystem>
#include <map>
#include <set>

// Launches nothing: records command lines, and deletes what a deletion tool would, below one folder only.
class TWRecordingLauncher final : public TWProcessLauncher {
public:
    enum class Ending { OnALaterTurn, ByTest };

    // The folder is shown as "ROOT" in the records.
    TWRecordingLauncher(TWRunLoop& runLoop, std::string root)
        : runLoop_(runLoop)
        , root_(std::move(root))
    {
    }

    Ending ending = Ending::OnALaterTurn;
    bool deaf = false; // children do not listen to terminate()
    bool deletes = true;
    std::map<std::string, TWTermination> failures; // by path: how that child ends, without having deleted anything
    std::set<std::string> lasting; // tools that end only when they are told to
    std::set<std::string> missing; // tools that cannot be launched
    std::vector<std::string> records; // "/bin/rm -rf ROOT/./file", "terminate", "kill", "destroyed"
    std::function<void()> atLaunch = [] {}; // what another program does at that moment

    std::unique_ptr<TWChildProcess> launch(const std::string& path, const std::vector<std::string>& arguments,
        const TWHeldFolder& workingFolder, Terminated terminated) override
    {
        auto child = std::make_shared<Child>();
        child->folder = TWDescriptor(dup(workingFolder.descriptor()));
        child->name = arguments.empty() ? "" : arguments.back();
        child->terminated = std::move(terminated);
        std::string line = path;
        for (std::size_t index = 0; index + 1 < arguments.size(); ++index)
            line += " " + arguments[index];
        records.push_back(shown(line + " " + child->folderPath() + "/" + child->name));
        running_.push_back(child);
        atLaunch();
        if (missing.contains(path))
            runLoop_.post([this, child] { end(child, { TWTermination::Kind::NotLaunched, ENOENT, "" }); });
        else if (ending == Ending::OnALaterTurn && !lasting.contains(path))
            runLoop_.post([this, child] { end(child, natural(*child)); });
        return std::make_unique<Handle>(*this, child);
    }

    // Ends the running children, on this call.
    void endAll()
    {
        for (const auto& child : std::vector(running_))
            end(child, natural(*child));
    }
    std::size_t running() const { return running_.size(); }

    std::string shown(std::string text) const
    {
        for (auto at = text.find(root_); at != std::string::npos; at = text.find(root_, at))
            text.replace(at, root_.size(), "ROOT");
        return text;
    }

private:
    struct Child {
        TWDescriptor folder; // its working folder
        std::string name; // "./NAME"
        Terminated terminated;

        std::string folderPath() const
        {
            return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(folder.get())).string();
        }
        std::string path() const { return folderPath() + name.substr(std::min<std::size_t>(1, name.size())); }
    };
    struct Handle final : TWChildProcess {
        Handle(TWRecordingLauncher& given, std::shared_ptr<Child> childGiven)
            : launcher(given)
            , child(std::move(childGiven))
        {
        }
        ~Handle() override
        {
            if (std::erase(launcher.running_, child) > 0)
                launcher.records.emplace_back("destroyed");
        }
        void terminate() override { launcher.signal(child, "terminate", 15); }
        void kill() override { launcher.signal(child, "kill", 9); }
        TWRecordingLauncher& launcher;
        std::shared_ptr<Child> child;
    };

    void signal(const std::shared_ptr<Child>& child, const char* record, int number)
    {
        records.emplace_back(record);
        if (deaf && number == 15)
            return;
        runLoop_.post([this, child, number] { end(child, { TWTermination::Kind::Signalled, number, "" }); });
    }
    TWTermination natural(const Child& child)
    {
        if (const auto failure = failures.find(child.path()); failure != failures.end())
            return failure->second;
        std::error_code error;
        if (deletes && TWPath::isAtOrBelow(child.folderPath(), root_) && child.name.starts_with("./"))
            std::filesystem::remove_all(
                "/proc/self/fd/" + std::to_string(child.folder.get()) + "/" + child.name, error);
        return {};
    }
    void end(const std::shared_ptr<Child>& child, const TWTermination& termination)
    {
        if (std::erase(running_, child) == 0)
            return;
        const auto terminated = std::move(child->terminated); // the call may destroy the child
        terminated(termination);
    }

    TWRunLoop& runLoop_;
    const std::string root_;
    std::vector<std::shared_ptr<Child>> running_;
};

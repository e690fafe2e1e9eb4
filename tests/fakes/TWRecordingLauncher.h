#pragma once

#include "platform/TWProcessLauncher.h"
#include "platform/TWRunLoop.h"
#include "support/TWPath.h"

#include <filesystem>
#include <map>
#include <numeric>

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
    std::map<std::string, TWTermination>
        failures; // by the last argument: how that child ends, without having deleted anything
    std::vector<std::string> records; // "/bin/rm -rf ROOT/file", "terminate", "kill", "destroyed"

    std::unique_ptr<TWChildProcess> launch(
        const std::string& path, const std::vector<std::string>& arguments, Terminated terminated) override
    {
        const auto join = [](const std::string& line, const std::string& argument) { return line + " " + argument; };
        records.push_back(shown(std::accumulate(arguments.begin(), arguments.end(), path, join)));
        auto child = std::make_shared<Child>(Child{ arguments.empty() ? "" : arguments.back(), std::move(terminated) });
        running_.push_back(child);
        if (ending == Ending::OnALaterTurn)
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
        std::string path;
        Terminated terminated;
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
        if (const auto failure = failures.find(child.path); failure != failures.end())
            return failure->second;
        std::error_code error;
        if (deletes && TWPath::isAtOrBelow(child.path, root_) && child.path != root_)
            std::filesystem::remove_all(child.path, error);
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

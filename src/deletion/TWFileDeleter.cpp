#include "deletion/TWFileDeleter.h"

#include "support/TWLog.h"
#include "support/TWPath.h"
#include "support/TWText.h"

using namespace std::chrono_literals;

namespace {

constexpr auto Busy
    = "TWFileDeleter: A deletion request was made while a deletion was ongoing! You can't do that unless you "
      "instanciate another TWFileCleaner in parallel.";
constexpr auto NotStarted
    = "The deletion tool %@ could not be started (%@). Please install Tidewell and the package coreutils again.";
constexpr auto Killed = "The deletion tool %@ was ended by signal %@.";
constexpr auto ToolSaid = "The deletion tool said: %@";

struct ModeRow {
    TWSecureMode mode;
    const char* option; // absent when the tool is run without one
    const char* label;
};

constexpr ModeRow Modes[] = {
    { -1, nullptr, "Delete" },
    { 0, "--simple", "One-pass secure delete" },
    { 1, "--medium", "7-pass secure delete" },
    { 2, nullptr, "35-pass secure delete" },
};

// Kept on purpose: a mode that is none of the four overwrites like the strongest one, under an empty label.
constexpr ModeRow AnyOtherMode = { 0, nullptr, "" };

const ModeRow& rowFor(TWSecureMode mode)
{
    for (const auto& row : Modes) {
        if (row.mode == mode)
            return row;
    }
    return AnyOtherMode;
}

std::string toolsFirstLine(const TWTermination& termination)
{
    const auto firstLine = termination.output.substr(0, termination.output.find('\n'));
    return firstLine.empty() ? "" : TWText::fill(ToolSaid, { firstLine });
}

std::string problemText(const TWTermination& termination, const std::string& launchPath)
{
    switch (termination.kind) {
    case TWTermination::Kind::NotLaunched:
        return TWText::fill(NotStarted, { launchPath, TWErrorText(termination.code) });
    case TWTermination::Kind::Signalled:
        return TWText::fill(Killed, { launchPath, std::to_string(termination.code) });
    case TWTermination::Kind::Exited:
        break;
    }
    return toolsFirstLine(termination);
}

}

TWFileDeleter::TWFileDeleter(const TWDeletionTools& tools)
    : tools_(tools)
{
}

std::string TWFileDeleter::deleteFile(const std::string& path, TWSecureMode mode, TWWaiting waiting, TWAuthorization)
{
    // Kept on purpose: the authorization is not looked at, no deletion ever asks for administrator rights.
    return deleteFileWithoutAuthorization(path, mode, waiting);
}

std::string TWFileDeleter::deleteFileWithoutAuthorization(
    const std::string& requestedPath, TWSecureMode mode, TWWaiting waiting)
{
    if (deleting_) {
        TWLog::write(Busy);
        return "";
    }
    deleting_ = true;
    const auto path = TWPath::withoutTrailingSlashes(requestedPath);
    const auto& row = rowFor(mode);
    // Differs on purpose: some paths are refused, see TWDeletionGuard.
    problem_ = tools_.guard.objection(path);
    notice_.clear();
    if (problem_.empty()) {
        launchPath_ = mode == TWPlainDelete ? tools_.places.rm : tools_.places.srm;
        std::vector<std::string> arguments{ "-rf" };
        if (row.option)
            arguments.push_back(row.option);
        arguments.push_back(path);
        task_ = tools_.launcher.launch(launchPath_, arguments, [this](const TWTermination& end) { doneRunning(end); });
    } else {
        refusal_ = tools_.runLoop.after(0ms, [this] { finish(); });
    }
    auto& runLoop = tools_.runLoop;
    const std::weak_ptr<const int> life = life_;
    while (waiting == TWWaiting::UntilDone && !life.expired() && deleting_)
        runLoop.turn(100ms);
    return row.label;
}

void TWFileDeleter::terminate()
{
    if (!task_)
        return;
    task_->terminate();
    patience_ = tools_.runLoop.after(100ms, [this] {
        if (task_)
            task_->kill();
    });
}

void TWFileDeleter::doneRunning(const TWTermination& termination)
{
    problem_ = problemText(termination, launchPath_);
    if (termination.kind == TWTermination::Kind::Exited && termination.code == 0)
        notice_ = toolsFirstLine(termination);
    finish();
}

// The delegate may destroy this object in its call.
void TWFileDeleter::finish()
{
    patience_.reset();
    task_.reset();
    refusal_.reset();
    deleting_ = false;
    if (delegate_)
        delegate_->fileDeleterDone();
}

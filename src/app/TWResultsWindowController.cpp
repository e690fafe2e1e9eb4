#include "app/TWResultsWindowController.h"

using namespace std::chrono_literals;

namespace {

// One frame of a usual screen. Nobody can read lines that arrive faster, and painting a line costs more than deleting a
// file.
constexpr auto Frame = 16ms;

constexpr TWColour Colours[] = {
    { 1.0, 1.0, 1.0 },
    { 0.714, 1.0, 0.0 },
    { 1.0, 0.305, 0.258 },
};

// A progress line that ends like this only announces what follows, so it explains no failure.
constexpr auto AnnouncementEnding = " ...";

}

TWColour TWMessage::colour() const
{
    return Colours[static_cast<std::size_t>(type)];
}

TWResultsWindowController::TWResultsWindowController(TWRunLoop& runLoop)
    : runLoop_(runLoop)
{
}

void TWResultsWindowController::addMessage(TWMessage message)
{
    if (std::this_thread::get_id() != mainThread_) {
        runLoop_.post([this, message = std::move(message)] { addMessage(message); });
        return;
    }
    const bool failed = message.type == TWMessageType::Failure;
    if (failed) {
        markExplanation();
        failures_.push_back(messages_.size());
    }
    if (message.cleaner != TWNoCleaner) {
        auto& count = counts_[static_cast<std::size_t>(message.cleaner)];
        ++count.lines;
        count.failures += failed ? 1 : 0;
    }
    messages_.push_back(std::move(message));
    if (view_ && !pending_)
        pending_ = runLoop_.after(Frame, [this] { flush(); });
}

// The progress lines directly before a failure belong to the cleaner that has failed.
void TWResultsWindowController::markExplanation()
{
    for (auto line = messages_.rbegin(); line != messages_.rend() && line->text.starts_with(TWProgressMark); ++line)
        line->explainsFailure = !line->text.ends_with(AnnouncementEnding);
}

std::size_t TWResultsWindowController::firstExplanation(std::size_t failure) const
{
    auto first = failure;
    while (first > 0 && messages_[first - 1].explainsFailure)
        --first;
    return first;
}

void TWResultsWindowController::removeAllMessages()
{
    pending_.reset();
    messages_.clear();
    failures_.clear();
    counts_ = {};
    if (view_)
        view_->messagesRemoved();
}

void TWResultsWindowController::flush()
{
    if (!pending_)
        return;
    pending_.reset();
    if (view_)
        view_->messagesAdded(messages_.size());
}

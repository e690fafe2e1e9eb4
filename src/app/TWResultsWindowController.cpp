#include "app/TWResultsWindowController.h"

using namespace std::chrono_literals;

namespace {

// One frame of a usual screen: lines that come faster than this cannot be read anyway, and painting each costs more
// than deleting a file.
constexpr auto Frame = 16ms;

constexpr TWColour Colours[] = {
    { 1.0, 1.0, 1.0 },
    { 0.714, 1.0, 0.0 },
    { 1.0, 0.305, 0.258 },
};

}

TWColour TWMessage::colour() const
{
    return Colours[static_cast<std::size_t>(type)];
}

TWResultsWindowController::TWResultsWindowController(TWRunLoop& runLoop)
    : runLoop_(runLoop)
{
}

void TWResultsWindowController::addMessage(std::string text, TWMessageType type)
{
    if (std::this_thread::get_id() != mainThread_) {
        runLoop_.post([this, text = std::move(text), type] { addMessage(text, type); });
        return;
    }
    messages_.push_back({ std::move(text), type });
    if (view_ && !pending_)
        pending_ = runLoop_.after(Frame, [this] { flush(); });
}

void TWResultsWindowController::removeAllMessages()
{
    pending_.reset();
    messages_.clear();
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

#include "editors/TWLogsFilter.h"

namespace {

constexpr int NodesPerTurn = 10000; // a few milliseconds

// Returns whether anything in the level is shown. Recursive; a scan has a limit of depth.
bool markLevel(const TWLogsTree::Level& level, const TWKeywordMatcher& matcher, bool isInside)
{
    bool any = false;
    for (const auto& node : level) {
        node->isShown = isInside || (node->root == TWLogsNode::Root::None && matcher.matches(node->item));
        if (node->children && markLevel(*node->children, matcher, node->isShown))
            node->isShown = true;
        any = any || node->isShown;
    }
    return any;
}

}

TWLogsFilter::TWLogsFilter(TWRunLoop& runLoop, const std::string& text, std::function<void()> done)
    : runLoop_(runLoop)
    , matcher_({ text })
    , done_(std::move(done))
{
}

void TWLogsFilter::mark(const TWLogsTree::Level& level, const std::string& text)
{
    if (!text.empty())
        markLevel(level, TWKeywordMatcher({ text }), false);
}

void TWLogsFilter::start(TWLogsTree& tree)
{
    places_.assign(1, { &tree.logsRoot(), 0, false });
    turn_ = runLoop_.after(TWRunLoop::Duration(0), [this] { takeTurn(); });
}

void TWLogsFilter::stop()
{
    places_.clear();
    turn_.reset();
}

void TWLogsFilter::takeTurn()
{
    for (int node = 0; node < NodesPerTurn && !places_.empty(); ++node)
        visit();
    if (!places_.empty()) {
        turn_ = runLoop_.after(TWRunLoop::Duration(0), [this] { takeTurn(); });
        return;
    }
    turn_.reset();
    const auto done = done_;
    done();
}

// Whatever is above a node was visited before it.
void TWLogsFilter::visit()
{
    auto& place = places_.back();
    if (place.row == place.level->size()) {
        places_.pop_back();
        return;
    }
    auto& node = *(*place.level)[place.row++];
    const bool isInside = place.isInside || (node.root == TWLogsNode::Root::None && matcher_.matches(node.item));
    node.isShown = isInside;
    for (auto* above = node.parent; isInside && above && !above->isShown; above = above->parent)
        above->isShown = true;
    if (node.children)
        places_.push_back({ node.children.get(), 0, isInside });
}

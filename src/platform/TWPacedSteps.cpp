#include "platform/TWPacedSteps.h"

#include <utility>

struct TWPacedSteps::State {
    TWRunLoop& runLoop;
    const std::size_t count;
    const std::size_t stepsPerTurn;
    const std::function<void(std::size_t)> step;
    const std::function<void()> done;
    std::size_t next = 0;
    bool alive = true;
    std::unique_ptr<TWRunLoopHandle> nextTurn;
};

TWPacedSteps::TWPacedSteps(TWRunLoop& runLoop, std::size_t count, std::size_t stepsPerTurn,
    std::function<void(std::size_t)> step, std::function<void()> done)
    : state_(new State{ runLoop, count, stepsPerTurn, std::move(step), std::move(done), 0, true, nullptr })
{
    scheduleTurn(state_);
}

TWPacedSteps::~TWPacedSteps()
{
    state_->alive = false;
    state_->nextTurn.reset();
}

void TWPacedSteps::scheduleTurn(const std::shared_ptr<State>& state)
{
    state->nextTurn = state->runLoop.after(TWRunLoop::Duration(0), [weak = std::weak_ptr(state)] {
        if (const auto living = weak.lock())
            takeTurn(living);
    });
}

void TWPacedSteps::takeTurn(const std::shared_ptr<State>& state)
{
    const auto end = std::min(state->count, state->next + state->stepsPerTurn);
    while (state->alive && state->next < end)
        state->step(state->next++);
    if (!state->alive)
        return;
    if (state->next < state->count)
        scheduleTurn(state);
    else
        state->done();
}

#pragma once

#include "platform/TWRunLoop.h"

// Does many small steps on the main thread without blocking it: calls step with 0 to count - 1, stepsPerTurn calls per
// turn of the event loop, beginning with the next turn, and then calls done. Destroying it, which is allowed inside
// those calls, stops the calls. Main thread.
class TWPacedSteps final {
public:
    TWPacedSteps(TWRunLoop&, std::size_t count, std::size_t stepsPerTurn, std::function<void(std::size_t)> step,
        std::function<void()> done);
    ~TWPacedSteps();

    TWPacedSteps(const TWPacedSteps&) = delete;
    TWPacedSteps& operator=(const TWPacedSteps&) = delete;

private:
    struct State;

    static void scheduleTurn(const std::shared_ptr<State>&);
    static void takeTurn(const std::shared_ptr<State>&);

    std::shared_ptr<State> state_;
};

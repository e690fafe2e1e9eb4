#pragma once

#include "cleaners/TWPlan.h"

#include <array>

// How an action is named where plans are shown.
struct TWPlannedActionTexts {
    const char* json;
    const char* would; // after a name: "would be deleted"
    const char* one; // of what it happens to
    const char* several;
    const char* toDo; // after a number of them in a short line: "2 applications to quit"; "" for what is said otherwise
};

// By action.
inline constexpr std::array<TWPlannedActionTexts, TWPlannedActionCount> TWPlannedActionTable{ {
    { "delete", "would be deleted", "item", "items", "" },
    { "remove-entries", "would lose entries", "file", "files", "" },
    { "quit", "would be asked to quit", "application", "applications", "to quit" },
    { "unmount", "would be unmounted", "volume", "volumes", "to unmount" },
} };

inline const TWPlannedActionTexts& TWTextsOf(TWPlannedAction action)
{
    return TWPlannedActionTable[static_cast<std::size_t>(action)];
}

// Numbers of items, by action.
struct TWPlannedCounts : std::array<std::uint64_t, TWPlannedActionCount> {
    TWPlannedCounts() { fill(0); }
    std::uint64_t& of(TWPlannedAction action) { return (*this)[static_cast<std::size_t>(action)]; }
    std::uint64_t of(TWPlannedAction action) const { return (*this)[static_cast<std::size_t>(action)]; }

    TWPlannedCounts& operator+=(const TWPlannedCounts& other)
    {
        for (std::size_t action = 0; action < size(); ++action)
            (*this)[action] += other[action];
        return *this;
    }

    // Calls the function with the texts and the number of each action on what is no path, if there are any.
    template <typename Function>
    void forEachThing(Function function) const
    {
        for (const auto action : { TWPlannedAction::Quit, TWPlannedAction::Unmount }) {
            if (of(action) > 0)
                function(TWTextsOf(action), of(action));
        }
    }
};

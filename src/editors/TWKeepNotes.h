#pragma once

#include "deletion/TWFileDeleter.h"
#include "editors/TWKeepRecord.h"

#include <map>

// The note beside an entry in the sheet of the keep list.
struct TWKeepNote {
    std::string text; // "" while nothing is known, or if there is nothing to say
    bool warning = false; // the entry keeps nothing, or could not be looked at
};

// Finds out in the background which kept paths exist, so that a slow disk does not block the window. Main thread.
class TWKeepNotes final {
public:
    TWKeepNotes(const TWDeletionTools&, std::function<void()> changed);

    // Looks at the paths that have not been looked at yet. Cancels the work for an earlier list.
    void find(const std::vector<TWKeepRecord>&);

    // Cancels the work and forgets all results.
    void clear();

    TWKeepNote note(const TWKeepEntry&) const;

private:
    using Found = std::pair<std::string, TWKeepNote>; // by the entry's text

    const TWDeletionTools& tools_;
    const std::function<void()> changed_;
    std::map<std::string, TWKeepNote> found_;
    std::unique_ptr<TWBackgroundStream<Found>> looking_;
};

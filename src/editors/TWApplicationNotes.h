#pragma once

#include "deletion/TWFileDeleter.h"
#include "platform/TWApplications.h"
#include "platform/TWBackgroundStream.h"

#include <map>

// What the sheet shows beside an application in the list.
struct TWApplicationNote {
    std::string icon; // as in TWApplication; "" while it is not known
    std::string problem; // "" if an application is at the path, or while that is not known
};

// Finds out in the background what is at the paths of applications, so that a slow disk does not block the window.
// Paths are absolute. Main thread.
class TWApplicationNotes final {
public:
    TWApplicationNotes(const TWDeletionTools&, const TWApplications&, std::function<void()> changed);

    // Looks at the paths that have not been looked at yet. Cancels the work for an earlier list.
    void find(std::vector<std::string> paths);

    // Cancels the work and forgets all results.
    void clear();

    TWApplicationNote note(const std::string& path) const;

private:
    using Found = std::pair<std::string, TWApplicationNote>; // by path

    const TWDeletionTools& tools_;
    const TWApplications& applications_;
    const std::function<void()> changed_;
    std::map<std::string, TWApplicationNote> found_;
    std::unique_ptr<TWBackgroundStream<Found>> looking_;
};

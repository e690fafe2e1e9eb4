#pragma once

#include "platform/TWFileSystem.h"

// A folder, link or file that is met on the way to a path.
struct TWPathStep {
    std::string path; // all links above it are resolved
    TWFileLook look;
    bool last = false; // the path itself or, if that is a link, one that it leads through or to

    bool isLink() const { return look.isThere() && look.facts.kind == TWFileKind::Link; }
};

// Goes the way to an absolute path one component at a time, from "/" on, and through every link on it. What does not
// exist is taken for a folder. Ends early after as many links as the system follows. look is asked about each path and
// may answer from memory.
std::vector<TWPathStep> TWPathSteps(
    const TWFileSystem&, const std::string& path, const std::function<TWFileLook(const std::string& path)>& look);

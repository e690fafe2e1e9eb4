#pragma once

#include "deletion/TWFileDeleteQueue.h"
#include "fakes/TWFakeMachine.h"
#include "support/TWLog.h"

// A machine with what deleters, queues and cleaners work with.
struct TWFakeDeletion : TWFakeMachine {
    TWDeletionGuard guard {places, fileSystem, mountTable, dataFolder};
    TWDeletionTools tools {runLoop, launcher, fileSystem, guard, places};
};

// Expects log lines, as long as it lives.
struct TWExpectedLog {
    std::vector<std::string> lines;

    TWExpectedLog()
    {
        TWLog::setSink([this](std::string_view line) { lines.emplace_back(line); });
    }
    ~TWExpectedLog() { TWLog::setSink({}); }
};

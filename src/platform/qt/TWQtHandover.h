#pragma once

#include "platform/TWHandover.h"

#include <QLocalServer>

// Over a local socket that only the user can reach, one per data folder. Where the first path cannot be used (too long
// for a socket, or in a folder that cannot be written) both sides take the next one.
class TWQtHandover final : public TWHandover {
public:
    explicit TWQtHandover(std::vector<std::string> socketPaths);

    bool listen(CarryOut) override;
    std::optional<TWCommandResult> handOver(
        const std::vector<std::string>& words, const std::string& workingFolder) const override;

private:
    void serve();

    const std::vector<std::string> socketPaths_;
    QLocalServer server_;
    CarryOut carryOut_;
};

#pragma once

#include "platform/TWHandover.h"

#include <QLocalServer>

// Over a local socket that only the user can reach, one per data folder.
class TWQtHandover final : public TWHandover {
public:
    explicit TWQtHandover(std::string socketPath);

    bool listen(CarryOut) override;
    std::optional<TWCommandResult> handOver(
        const std::vector<std::string>& words, const std::string& workingFolder) const override;

private:
    void serve();

    const std::string socketPath_;
    QLocalServer server_;
    CarryOut carryOut_;
};

#pragma once

#include "cleaners/TWCleaner.h"
#include "deletion/TWFileDeleteQueue.h"
#include "settings/TWSettings.h"

// Empties the user's own Trash: every item in its files folder, each by a child process, and then, quietly, the records
// of the items that are gone. An item that could not be deleted keeps its record and can still be restored. Trash
// folders on other volumes are not touched.
class TWTrashCleaner final : public TWCleaner, private TWFileDeleteQueueDelegate {
public:
    TWTrashCleaner(const TWDeletionTools&, const TWSettings&);

    // The folder that holds the items, with the home folder abbreviated.
    void setInfo(std::string trashFolder) { info_ = std::move(trashFolder); }
    const std::string& info() const { return info_; }

    // What clean() would delete, in its order. Why it is nothing, when the folder cannot be read, is a line for the
    // user.
    struct Plan {
        std::vector<std::string> paths;
        std::string problem;
    };
    Plan plan() const;

    void clean() override;
    void stop() override;
    void verify();

private:
    void fileDeleteQueueProgressed(const std::string& message) override;
    void fileDeleteQueueDone() override;
    std::unique_ptr<TWFileDeleteQueue> makeQueue(TWFileDeleteQueue::Announcing);
    std::vector<std::string> recordNames() const;
    std::vector<std::string> recordsWithoutItem() const;

    TWDeletionTools tools_;
    const TWSettings& settings_;
    std::string info_;
    std::vector<std::string> records_; // names of the records that were there when the job began
    std::unique_ptr<TWFileDeleteQueue> fileDeleteQueue_;
    std::unique_ptr<TWFileDeleteQueue> recordsQueue_; // follows fileDeleteQueue_ in every job
};

#pragma once

#include "platform/TWOwnFiles.h"
#include "platform/TWRunLoop.h"
#include "platform/TWUserDefaults.h"

#include <map>

// User defaults in a property list that holds a dictionary. Changes are written together on the next turn of the run
// loop, into the file as it is by then. Writes are atomic: one that fails leaves the old file.
class TWFileUserDefaults final : public TWUserDefaults {
public:
    TWFileUserDefaults(const TWOwnFiles&, TWRunLoop&, std::string file);

    std::optional<TWValue> value(const std::string& key) const override;
    void setValue(const std::string& key, const TWValue&) override;
    void removeValue(const std::string& key) override;
    std::string synchronize() override;
    void setWriteFailed(std::function<void(const std::string&)> failed) override { writeFailed_ = std::move(failed); }
    std::string problem() const override;
    std::string file() const override { return file_; }

private:
    void read();
    void change(const std::string& key, std::optional<TWValue>);
    void applyChanges();
    void writeByItself();
    std::string write();

    const TWOwnFiles& ownFiles_;
    TWRunLoop& runLoop_;
    const std::string file_;
    TWDictionary stored_;
    std::map<std::string, std::optional<TWValue>> changes_; // not written yet; nullopt means removed
    std::string unreadable_; // why the file could not be read, or ""
    std::string keptAs_; // the second name of the damaged file that this process has replaced, or ""
    std::function<void(const std::string&)> writeFailed_;
    bool failureReported_ = false; // since the last write that succeeded
    std::unique_ptr<TWRunLoopHandle> writing_;
};

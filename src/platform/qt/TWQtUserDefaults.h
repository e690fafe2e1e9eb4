#pragma once

#include "platform/TWFileSystem.h"
#include "platform/TWUserDefaults.h"

#include <QSettings>

// One INI file of our own. Written atomically by QSettings, under its own lock.
class TWQtUserDefaults final : public TWUserDefaults {
public:
    TWQtUserDefaults(const TWFileSystem&, std::string file);

    std::optional<TWValue> value(const std::string& key) const override;
    void setValue(const std::string& key, const TWValue&) override;
    void removeValue(const std::string& key) override;
    std::string synchronize() override;
    std::string problem() const override { return problem_; }
    std::string file() const override { return file_; }

private:
    bool readyForChange();
    bool keepDamaged() const;

    const TWFileSystem& fileSystem_;
    const std::string file_;
    std::optional<QSettings> settings_;
    std::string problem_;
    bool changeRefused_ = false;
};

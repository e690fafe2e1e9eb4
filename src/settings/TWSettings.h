#pragma once

#include "platform/TWUserDefaults.h"

#include <optional>
#include <span>
#include <string>

// Every setting that is not a list, in the order of the table in TWSettings.cpp.
enum class TWKey {
    ApplicationsCleaner,
    RecentItemsCleaner,
    TrashCleaner,
    VolumesCleaner,
    ClipboardCleaner,
    FilesCleaner,
    LogsCleaner,
    SafariTabsCleaner,
    ShowResults,
    ShowResultsMode,
    GrowlCleaningDone,
    AutoQuit,
    AutoQuitMode,
    BounceDockIcon,
    SecurelyDeleteFiles,
    SecurelyDeleteFilesMode,
    UseAuthorization,
    ManualFilesRuleCreation,
    ManualRecentItemsRuleCreation,
    ApplicationsForceQuit,
    ApplicationsTimeout,
    UUID,
    LastLaunchedVersion,
    FirstLaunchDone,
};

enum class TWKeyType { Boolean, Integer, String }; // an integer is not negative

struct TWKeyRow {
    TWKey key;
    TWKeyType type;
    const char* name; // as stored
    const char* meaning; // for `tidewell settings list`
};

// Typed reading and writing of the settings. Looks for a value among the stored values, then among the registered
// defaults. A value that does not fit the key's type counts as absent. Main thread.
class TWSettings final {
public:
    explicit TWSettings(TWUserDefaults&);

    static std::span<const TWKeyRow> keys();
    static const TWKeyRow& row(TWKey);
    static const TWKeyRow* rowNamed(std::string_view name);

    // Absent reads as false, 0 and "". A boolean read as an integer is 1 or 0, and an integer read as a boolean is true
    // unless 0.
    bool boolean(TWKey) const;
    std::int32_t integer(TWKey) const;
    std::string string(TWKey) const;
    bool hasValue(TWKey key) const { return find(key).has_value(); }

    void set(TWKey, const TWValue&);

    // Removes the stored value, so that the registered default is used.
    void reset(TWKey);

    // The values of keys that are not stored. Kept in memory only.
    void registerDefaults(TWDictionary defaults) { registered_ = std::move(defaults); }

    TWUserDefaults& userDefaults() { return userDefaults_; }

    // Parses a text as a user writes it ("yes", "off", "2") or as the settings file holds it. Nothing if it does not
    // fit the type.
    static std::optional<TWValue> parse(TWKeyType, const std::string& text);

private:
    std::optional<TWValue> stored(const TWKeyRow&) const;
    std::optional<TWValue> find(TWKey) const;

    TWUserDefaults& userDefaults_;
    TWDictionary registered_;
};

#pragma once

#include "plist/TWPropertyListBudget.h"
#include "settings/TWRecordFile.h"

#include <algorithm>
#include <concepts>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

// One record of a saved list, such as a Files rule. A record keeps what it does not understand (see TWKeptEntries), so
// that value() gives back all of what from() took.
template <typename Record>
concept TWRecord = std::copyable<Record> && std::equality_comparable<Record> && requires(
    const Record& record, const std::vector<Record>& records, TWValue value)
{
    // Its name in a sentence: "a Files rule".
    {
        Record::Kind
        } -> std::convertible_to<std::string_view>;
    // Returns nothing if the value is not such a record; then the whole list counts as unreadable.
    {
        Record::from(std::move(value))
        } -> std::same_as<std::optional<Record>>;
    {
        record.value()
        } -> std::same_as<TWValue>;
    // Identifies a record when shipped ones are merged and when a saved one is to be found again after an edit.
    {
        record.identity()
        } -> std::convertible_to<std::string_view>;
    // Returns one short clause why the records cannot form a list, or "".
    {
        Record::problem(records)
        } -> std::same_as<std::string>;
};

// What is at the path of a list.
enum class TWListState {
    Saved, // a list
    Missing, // nothing, not even a link
    Unreadable, // something that cannot be read as a list
    NotRecords, // a list of something else
};

// A saved list of records. The live list is what an editor shows and a cleaning reads; it can be ahead of the saved
// one, the file, by edits that have not been written. A command changes the saved list and makes the same change in the
// live one. While the saved list cannot be read, the records that the fallback returns stand in for it; the damaged
// file is kept beside the new one when a list is written. Main thread.
template <TWRecord Record>
class TWRecordList final {
public:
    using Records = std::vector<Record>;

    // Returns the records that stand in for a saved list that is missing or cannot be read.
    using Fallback = std::function<Records(TWListState, const Records& live)>;

    struct Loaded {
        TWListState state = TWListState::Missing;
        Records records;
        std::string problem; // one line if the state is Unreadable or NotRecords
    };

    // The file is in the data folder, which must outlive the list.
    TWRecordList(const TWDataFolder& dataFolder, std::string fileName, Fallback fallback)
        : file_(dataFolder, std::move(fileName))
        , fallback_(std::move(fallback))
    {
    }

    // Called after load(), changeSaved() or changeSavedRow() has changed the live list. Not called for edit() and
    // merge(), because their callers know of the change.
    void setChanged(std::function<void()> changed) { changed_ = std::move(changed); }

    // The live list itself, not a copy: the same vector for the life of this object. Change it through this class only.
    const std::shared_ptr<Records>& live() const { return live_; }
    const Records& records() const { return *live_; }

    std::string path() const { return file_.path(); }

    // One line if the saved list could not be read when it was last looked at, else "".
    const std::string& problem() const { return problem_; }

    // The second name of the damaged file that was kept last, or "".
    const std::string& keptAs() const { return file_.keptAs(); }

    // Reads any file of such records, for example the shipped defaults.
    Loaded read(const std::string& path) const;

    // Replaces the live list by the saved one.
    TWListState load();

    // Changes the live list at once; it is written later. Calls change with the records.
    template <typename Change>
    void edit(Change change);

    // Appends the records whose identity no record of the live list has. They are saved with the next write, but are no
    // edit of the user.
    void merge(Records);

    // Whether the user has changed the live list since it was loaded or written. Quick unless there was an edit since
    // the last call.
    bool hasUnsavedEdits() const;

    // Writes the live list. "" or one line that names the file and the remedy; the file is then as it was.
    std::string write();

    // The saved list as it is now, or the records that stand in for it.
    Records saved() const { return savedNow().records; }

    // The next two read the saved list afresh, change and write it, and then make the same change in the live list. No
    // other process may write the list in the meantime: the caller holds the lock of the lists or is the window that
    // carries out all commands. They return "", or one line if the list could not be written; then nothing has changed.

    // Calls change with the saved list and, if there are unsaved edits, with the live list. Returns nothing, and
    // changes nothing, if change returns false for the saved list.
    std::optional<std::string> changeSaved(const std::function<bool(Records&)>& change);

    // Calls change with the saved list and the row and, if there are unsaved edits, with the live list and the row of
    // the same record in it: the first equal one, or else the first of the same identity, if there is one. Returns
    // nothing if the saved list has no such row.
    std::optional<std::string> changeSavedRow(
        std::size_t row, const std::function<void(Records&, std::size_t row)>& change);

private:
    Loaded savedNow() const;
    std::string writeRecords(const Records&, const std::string& problem);
    std::string finishChange(Loaded saved, const std::function<void(Records&)>& changeLive);
    void notify() const;

    TWRecordFile file_;
    Fallback fallback_;
    std::function<void()> changed_;
    const std::shared_ptr<Records> live_ = std::make_shared<Records>();
    std::string problem_;
    std::unique_ptr<const Records> beforeEdits_; // the live list without the user's edits; nothing if it is as saved
    mutable bool compared_ = true; // differs_ is up to date
    mutable bool differs_ = false;
};

template <TWRecord Record>
typename TWRecordList<Record>::Loaded TWRecordList<Record>::read(const std::string& path) const
{
    TWListFile file = file_.read(path);
    if (!file.records)
        return { file.missing ? TWListState::Missing : TWListState::Unreadable, {}, std::move(file.problem) };
    Loaded loaded;
    loaded.state = TWListState::NotRecords;
    loaded.records.reserve(file.records->size());
    for (TWValue& value : *file.records) {
        // Converted one by one, so that there is never a second copy of the whole list.
        auto record = Record::from(std::exchange(value, {}));
        if (!record)
            return { loaded.state, {}, TWRecordFile::notARecord(path, loaded.records.size() + 1, Record::Kind) };
        loaded.records.push_back(std::move(*record));
    }
    if (const std::string problem = Record::problem(loaded.records); !problem.empty())
        return { loaded.state, {}, TWDataFolder::unreadable(path, problem) };
    loaded.state = TWListState::Saved;
    return loaded;
}

template <TWRecord Record>
typename TWRecordList<Record>::Loaded TWRecordList<Record>::savedNow() const
{
    Loaded loaded = read(path());
    if (loaded.state != TWListState::Saved)
        loaded.records = fallback_(loaded.state, *live_);
    return loaded;
}

template <TWRecord Record>
TWListState TWRecordList<Record>::load()
{
    Loaded loaded = savedNow();
    problem_ = std::move(loaded.problem);
    *live_ = std::move(loaded.records);
    beforeEdits_.reset();
    notify();
    return loaded.state;
}

template <TWRecord Record>
template <typename Change>
void TWRecordList<Record>::edit(Change change)
{
    if (!beforeEdits_)
        beforeEdits_ = std::make_unique<const Records>(*live_);
    change(*live_);
    compared_ = false;
}

template <TWRecord Record>
void TWRecordList<Record>::merge(Records records)
{
    std::set<std::string, std::less<>> known;
    for (const Record& record : *live_)
        known.emplace(record.identity());
    std::erase_if(records, [&](const Record& record) { return !known.emplace(record.identity()).second; });
    if (records.empty())
        return;
    Records before = beforeEdits_ ? *beforeEdits_ : *live_;
    before.insert(before.end(), records.begin(), records.end());
    beforeEdits_ = std::make_unique<const Records>(std::move(before));
    std::move(records.begin(), records.end(), std::back_inserter(*live_));
    compared_ = false;
}

template <TWRecord Record>
bool TWRecordList<Record>::hasUnsavedEdits() const
{
    if (!beforeEdits_)
        return false;
    if (!std::exchange(compared_, true))
        differs_ = *beforeEdits_ != *live_;
    return differs_;
}

template <TWRecord Record>
std::string TWRecordList<Record>::writeRecords(const Records& records, const std::string& problem)
{
    if (const std::string reason = Record::problem(records); !reason.empty())
        return TWDataFolder::unwritable(path(), reason);
    TWValue::Array values;
    values.reserve(records.size());
    // Charged while they are made, so that a list that is too large is refused before it takes all memory.
    TWPropertyListBudget budget;
    for (const Record& record : records) {
        values.push_back(record.value());
        const std::string_view reason = budget.chargeItems(1) ? budget.chargeValue(values.back(), 1) : budget.TooLarge;
        if (!reason.empty())
            return TWDataFolder::unwritable(path(), std::string(reason));
    }
    return file_.write(std::move(values), problem.empty() ? TWOldFile::Replace : TWOldFile::KeepAsDamaged);
}

template <TWRecord Record>
std::string TWRecordList<Record>::write()
{
    std::string problem = writeRecords(*live_, problem_);
    if (problem.empty()) {
        problem_.clear();
        beforeEdits_.reset();
    }
    return problem;
}

template <TWRecord Record>
std::optional<std::string> TWRecordList<Record>::changeSaved(const std::function<bool(Records&)>& change)
{
    Loaded saved = savedNow();
    if (!change(saved.records))
        return std::nullopt;
    return finishChange(std::move(saved), [&](Records& live) { change(live); });
}

template <TWRecord Record>
std::optional<std::string> TWRecordList<Record>::changeSavedRow(
    std::size_t row, const std::function<void(Records&, std::size_t row)>& change)
{
    Loaded saved = savedNow();
    if (row >= saved.records.size())
        return std::nullopt;
    const Record chosen = saved.records[row];
    change(saved.records, row);
    return finishChange(std::move(saved), [&](Records& live) {
        auto same = std::find(live.begin(), live.end(), chosen);
        if (same == live.end())
            same = std::find_if(
                live.begin(), live.end(), [&](const Record& each) { return each.identity() == chosen.identity(); });
        if (same != live.end())
            change(live, static_cast<std::size_t>(same - live.begin()));
    });
}

template <TWRecord Record>
std::string TWRecordList<Record>::finishChange(Loaded saved, const std::function<void(Records&)>& changeLive)
{
    std::string problem = writeRecords(saved.records, saved.problem);
    if (!problem.empty())
        return problem;
    if (!beforeEdits_) {
        *live_ = std::move(saved.records);
        problem_.clear();
    } else {
        changeLive(*live_);
        Records before = *beforeEdits_;
        changeLive(before);
        beforeEdits_ = std::make_unique<const Records>(std::move(before));
        compared_ = false;
        // If the file was repaired in the meantime, the live list is still based on the stand-in. The problem stays, so
        // that the repaired file is kept when the live list is written over it.
        if (!saved.problem.empty())
            problem_.clear();
    }
    notify();
    return "";
}

template <TWRecord Record>
void TWRecordList<Record>::notify() const
{
    if (changed_)
        changed_();
}

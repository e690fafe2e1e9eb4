#pragma once

#include "deletion/TWDeletionTarget.h"
#include "deletion/TWFileDeleter.h"

#include <limits>
#include <optional>

// What a cleaner would do now. Made without changing anything; the run, the preview and the notes beside rules all use
// it.

// "None", where a plan refers to one of its own folders or items, or to a rule or word, by number.
inline constexpr std::uint32_t TWNone = std::numeric_limits<std::uint32_t>::max();

// What would happen to a preference file of another program.
struct TWPlannedChange {
    std::string file; // its path as the rule writes it, for messages
    std::string key; // whose entries would be removed, if the item keeps its file
    std::uint64_t entries = 0; // of that key, in the file when it was planned
};

// What would happen to an item.
enum class TWPlannedAction : std::uint8_t {
    Delete, // its path
    RemoveEntries, // from the file at its path, which stays
    Quit, // a running copy of an application
    Unmount, // a volume
};
inline constexpr std::size_t TWPlannedActionCount = 4;

// What an item is about that is no path to be deleted. Each cleaner derives what it acts on.
struct TWPlannedThing {
    virtual ~TWPlannedThing() = default;

    std::string path; // of the application or the mount point
    std::string which; // tells it from others of its name: "process 4711"; "" if its path does
    std::string details; // one clause about it, or ""
};

// One thing that would change: a path that would be deleted, or entries that would be removed from the file there.
struct TWPlannedItem {
    std::string_view name; // bytes, kept by the plan: the last component; the whole path if there is no folder
    TWFileFacts facts; // as the disk showed it while planning
    const char* objection = nullptr; // why the deletion would be refused; kept by the plan
    std::uint32_t folder = TWNone; // in TWPlan::folders
    std::uint32_t rule = TWNone; // that names the item; its number among the cleaner's records, counted from 0
    std::uint32_t word = TWNone; // of the dictionary, that matched; counted from 0
    std::uint32_t owner
        = TWNone; // item of the whole plan that this one belongs to: carried out only if that one is, and is gone
    std::uint32_t about = TWNone; // in TWPlan::changes of a preference file, in TWPlan::things of what is no path
    TWPlannedAction action = TWPlannedAction::Delete;
    bool quiet = false; // neither announced nor counted: a record that belongs to other items, or a key without entries

    // Nothing was at its path when it was planned. It is handed on all the same, but does not count.
    bool isAbsent() const { return action == TWPlannedAction::Delete && facts.identity == TWFileIdentity(); }
    bool keepsFile() const { return action == TWPlannedAction::RemoveEntries; }
    bool isThing() const { return action == TWPlannedAction::Quit || action == TWPlannedAction::Unmount; }
};

// A line that a plan says, and what it means for the job.
struct TWPlannedLine : TWReportLine {
    enum class Effect : std::uint8_t {
        None,
        Fails, // the job fails, unless something later says otherwise
        Incomplete, // something could not be looked at, so the job fails
    };

    TWPlannedLine(TWReportLine line, Effect givenEffect = Effect::None, std::uint32_t givenItem = 0)
        : TWReportLine(std::move(line))
        , effect(givenEffect)
        , item(givenItem)
    {
    }

    Effect effect;
    std::uint32_t item; // its place: said before the item with this number
};

struct TWPlan {
    std::vector<std::shared_ptr<const TWPlannedFolder>> folders; // parent folders of the items, each once in a row
    std::vector<TWPlannedItem> items; // in the order in which they are carried out
    std::vector<TWPlannedChange> changes;
    std::vector<std::shared_ptr<const TWPlannedThing>> things;
    std::vector<TWPlannedLine> lines; // for the results
    std::optional<std::string> failure; // ended the planning: nothing is carried out, and the job fails with this text
    bool incomplete = false; // something could not be looked at: everything else is carried out, then the job fails
    TWSecureMode secureMode = TWPlainDelete;
    TWAuthorization authorization = TWAuthorization::No;

    // Adds an item with a copy of the name.
    TWPlannedItem& addItem(std::string_view name);

    // Adds an item that is no path. The name is for the user.
    TWPlannedItem& addThing(std::string_view name, TWPlannedAction, std::shared_ptr<const TWPlannedThing>);

    // Says why the deletion of the item, the one that was added last, would be refused; nothing if the text is "".
    void object(TWPlannedItem&, const TWObjection&);

    // Says a line before the item that is added next.
    void addLine(TWReportLine line, TWPlannedLine::Effect effect = TWPlannedLine::Effect::None)
    {
        lines.emplace_back(std::move(line), effect, static_cast<std::uint32_t>(items.size()));
    }

    // Says what is wrong with the lists that the plan is made from, so that the job cannot succeed.
    void addProblems(const std::vector<std::string>& problems);

    // Adds a part that was planned after this one.
    void append(TWPlan part);

    // The same plan with its own texts, to be kept while this one grows.
    TWPlan copy() const;

    // Number of results in it; background work measures its parts by it.
    std::size_t size() const { return items.size() + lines.size(); }

    // Of an item that is about a preference file.
    const TWPlannedChange& change(const TWPlannedItem& item) const { return changes[item.about]; }

    // Of an item that is no path.
    const std::shared_ptr<const TWPlannedThing>& thing(const TWPlannedItem& item) const { return things[item.about]; }

    // The item of a plan as something to delete. It keeps the plan alive.
    static TWDeletionTarget target(const std::shared_ptr<const TWPlan>&, const TWPlannedItem&);

    // False for an item that a job would leave alone: it is refused, or its owner is, or the job would fail before.
    bool wouldDelete(const TWPlannedItem& item) const
    {
        return !failure && !item.objection && (item.owner == TWNone || !items[item.owner].objection);
    }

    // Space on disk that an item frees, given what has been measured of it so far. Nothing if it is not known: only
    // what would be deleted is measured, and a folder takes what is in it as well. 0 for an item that is not deleted.
    std::optional<std::uint64_t> bytes(const TWPlannedItem&, std::optional<std::uint64_t> measured) const;

    std::string path(const TWPlannedItem&) const; // for messages
    std::string realPath(const TWPlannedItem&) const;

private:
    char* keep(std::string_view text);

    std::vector<std::unique_ptr<char[]>> names_; // blocks; the names and objections of items point into them
    std::size_t blockSize_ = 0; // of the last block, in bytes
    std::size_t room_ = 0; // of these left
};

// What a cleaner's job carries out: a plan that was made just now, or one that a preview has shown, less what the user
// has unticked there and what it has shown as refused.
struct TWPlannedJob {
    std::shared_ptr<const TWPlan> plan;
    std::vector<bool> unticked; // by item; empty if everything is carried out
    std::uint64_t refused = 0; // items that a preview has shown as refused; they are not carried out
    std::shared_ptr<TWPreviewCheck> check; // of the run; nullptr if the plan was made just now
    std::string warning; // what validate() said when a preview made the plan

    bool isTicked(std::size_t item) const { return unticked.empty() || !unticked[item]; }
};

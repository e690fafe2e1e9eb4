#include "editors/TWKeepWindowController.h"

#include "deletion/TWFileDeleter.h"
#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <set>

namespace {

constexpr auto FileName = "KeepList.plist";
constexpr auto HelpAnchor = "Keep";
constexpr auto NoDefaults = "The default keep list \"%@\" could not be read. Please install Tidewell again.";
constexpr auto NothingDeleted = "%@ Until then nothing is deleted. To save a new list, open Edit > Keep List... in the "
                                "window and press OK.";
constexpr auto NotSavedTitle = "The keep list could not be saved.";
constexpr auto NotText
    = "\"%@\" cannot be kept in a list, because it is not valid UTF-8. Keep the folder around it, or "
      "its name with \"?\" in the place of such bytes.";
constexpr auto InTrash = "\"%@\" lies in the Trash, where nothing is kept. Please restore it first.";
constexpr auto DefaultsTitle = "Do you want to go back to the default keep list?";
constexpr auto DefaultsText
    = "Entries that you have added are removed from the list, and stay in force until you press OK. This "
      "cannot be undone.";
constexpr auto Restore = "Restore";
constexpr auto Cancel = "Cancel";
constexpr auto NotAppliedTitle = "The default keep list could not be restored.";
constexpr auto OK = "OK";

}

TWKeepWindowController::TWKeepWindowController(const TWEditorContext& context, const TWDictionaryWindowController&)
    : context_(context)
    , list_(
          context.dataFolder, FileName, [this](TWListState, const auto&) { return list_.read(defaultsPath()).records; })
    , notes_(context.deletion, [this] {
        if (view_)
            view_->notesChanged();
    })
{
    list_.setChanged([this] {
        defaultsProblem_.clear(); // because a saved list needs no defaults
        listChanged();
    });
    context.deletion.guard.setBeforeRules([this] { takeUpFile(); });
}

TWKeepWindowController::~TWKeepWindowController()
{
    context_.deletion.guard.setBeforeRules(nullptr);
}

void TWKeepWindowController::awakeFromNib(TWLaunchKind)
{
    seen_ = context_.deletion.fileSystem.look(file(), TWLinkAtEnd::Follow);
    const auto state = list_.load();
    saved_ = entries();
    fileUnreadable_ = false;
    if (state == TWListState::Missing && list_.read(defaultsPath()).state != TWListState::Saved)
        defaultsProblem_ = TWText::fill(NoDefaults, { defaultsPath() });
    handToGuard();
}

void TWKeepWindowController::edit(const std::function<void(std::vector<TWKeepRecord>&)>& change)
{
    list_.edit(change);
    listChanged();
}

void TWKeepWindowController::ok()
{
    const auto problem = write();
    if (problem.empty()) {
        if (view_)
            view_->closeSheet();
        return;
    }
    const auto wrong = firstMistake();
    if (view_ && wrong != entries().end())
        view_->selectRow(static_cast<int>(wrong - entries().begin()));
    context_.alerts.show({ NotSavedTitle, problem, OK, "" }, [](TWAnswer) {});
}

std::vector<TWKeepRecord>::const_iterator TWKeepWindowController::firstMistake() const
{
    return std::ranges::find_if(entries(), [](const auto& record) { return !record.entry().mistake().empty(); });
}

void TWKeepWindowController::restoreDefaults()
{
    const TWAlert question{ DefaultsTitle, DefaultsText, Restore, Cancel, TWConfirming::LosesSomething };
    askToApplyDefaults(context_.alerts, question, NotAppliedTitle);
}

std::string TWKeepWindowController::applyDefaults()
{
    auto defaults = list_.read(defaultsPath());
    if (defaults.state != TWListState::Saved)
        return TWText::fill(NoDefaults, { defaultsPath() });
    edit([&](auto& records) { records = std::move(defaults.records); });
    return "";
}

void TWKeepWindowController::help()
{
    if (view_)
        view_->openHelpAnchor(HelpAnchor);
}

void TWKeepWindowController::addEntry(TWKeepEntry entry)
{
    edit([&](auto& records) { records.emplace_back(std::move(entry)); });
    if (view_)
        view_->selectRow(static_cast<int>(entries().size()) - 1);
}

void TWKeepWindowController::addPath(const std::string& path)
{
    addEntry(entryFor(path));
}

TWKeepEntry TWKeepWindowController::entryFor(const std::string& path) const
{
    const bool isFolder = context_.deletion.fileSystem.look(path, TWLinkAtEnd::Follow).isFolder();
    return { isFolder ? TWKeepEntry::Kind::FolderWithContents : TWKeepEntry::Kind::Path,
        context_.deletion.places.abbreviate(path) };
}

std::string TWKeepWindowController::save(const TWKeepEntry& entry)
{
    if (!problem().empty())
        return problem();
    if (!TWText::isValidUTF8(entry.text))
        return TWText::fill(NotText, { TWText::oneLine(entry.text) });
    const auto add = [&](std::vector<TWKeepRecord>& records) {
        const auto same = [&](const TWKeepRecord& record) { return record.entry() == entry; };
        if (std::ranges::none_of(records, same))
            records.emplace_back(entry);
        return true;
    };
    return *list_.changeSaved(add);
}

std::string TWKeepWindowController::keep(const std::string& path)
{
    const auto& fileSystem = context_.deletion.fileSystem;
    const auto real = fileSystem.realPath(path);
    const auto trash = TWKeepRules::trash(context_.deletion.places, fileSystem);
    if (real && !trash.empty() && TWPath::isAtOrBelow(*real, trash))
        return TWText::fill(InTrash, { TWText::oneLine(path) });
    return save(entryFor(path));
}

void TWKeepWindowController::removeEntry(int row)
{
    edit([&](auto& records) { records.erase(records.begin() + row); });
}

void TWKeepWindowController::insertEntry(int row, TWKeepRecord record)
{
    edit([&](auto& records) { records.insert(records.begin() + row, std::move(record)); });
}

void TWKeepWindowController::setText(int row, const std::string& text)
{
    change(row, { entries()[static_cast<std::size_t>(row)].entry().kind, text });
}

void TWKeepWindowController::setKind(int row, TWKeepEntry::Kind kind)
{
    change(row, { kind, entries()[static_cast<std::size_t>(row)].entry().text });
}

// The table, in which the entry was changed, shows the change by itself.
void TWKeepWindowController::change(int row, TWKeepEntry entry)
{
    list_.edit([&](auto& records) { records[static_cast<std::size_t>(row)].setEntry(std::move(entry)); });
    handToGuard();
    findNotes();
}

std::string TWKeepWindowController::write()
{
    auto problem = list_.write();
    if (problem.empty()) {
        defaultsProblem_.clear();
        noteSaved();
    }
    handToGuard();
    return problem;
}

void TWKeepWindowController::sheetOpened()
{
    notes_.clear();
    sheetIsOpen_ = true;
    findNotes();
}

void TWKeepWindowController::sheetClosed()
{
    sheetIsOpen_ = false;
    finding_.reset();
    notes_.clear();
}

TWKeepNote TWKeepWindowController::note(int row) const
{
    return notes_.note(entries()[static_cast<std::size_t>(row)].entry());
}

std::string TWKeepWindowController::problem() const
{
    return list_.problem().empty() ? defaultsProblem_ : TWText::fill(NothingDeleted, { list_.problem() });
}

std::string TWKeepWindowController::defaultsPath() const
{
    return context_.bundle.resourcePath(FileName);
}

void TWKeepWindowController::listChanged()
{
    handToGuard();
    if (view_)
        view_->reloadTable();
    findNotes();
}

void TWKeepWindowController::findNotes()
{
    if (!sheetIsOpen_)
        return;
    // Several edits within one turn of the event loop start one search.
    finding_ = context_.deletion.runLoop.after(TWRunLoop::Duration(0), [this] { notes_.find(entries()); });
}

std::vector<TWKeepRecord> TWKeepWindowController::inForce()
{
    takeUpFile();
    return savedAndLive();
}

std::vector<TWKeepRecord> TWKeepWindowController::savedAndLive() const
{
    auto all = saved_;
    if (entries() == saved_)
        return all;
    std::set<std::pair<TWKeepEntry::Kind, std::string_view>> known;
    for (const auto& record : saved_)
        known.emplace(record.entry().kind, record.entry().text);
    for (const auto& record : entries()) {
        if (!known.contains({ record.entry().kind, record.entry().text }))
            all.push_back(record);
    }
    return all;
}

void TWKeepWindowController::noteSaved()
{
    saved_ = entries();
    seen_ = context_.deletion.fileSystem.look(file(), TWLinkAtEnd::Follow);
    fileUnreadable_ = false;
}

// Reads the file again if it has changed since. The live list stays as it is. If the file has been removed, its entries
// stay in force as well.
void TWKeepWindowController::takeUpFile()
{
    const auto look = context_.deletion.fileSystem.look(file(), TWLinkAtEnd::Follow);
    if (look.presence == seen_.presence && look.facts.identity == seen_.facts.identity
        && look.facts.changed == seen_.facts.changed)
        return;
    seen_ = look;
    auto read = list_.read(file());
    fileUnreadable_ = !read.problem.empty();
    if (read.state == TWListState::Saved)
        saved_ = std::move(read.records);
    handToGuard();
}

void TWKeepWindowController::handToGuard()
{
    TWKeepList entries;
    if (problem().empty() && !fileUnreadable_) {
        entries.emplace();
        for (const auto& record : savedAndLive())
            entries->push_back(record.entry());
    }
    context_.deletion.guard.setKeepList(std::move(entries));
}

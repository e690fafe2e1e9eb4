#include "editors/TWApplicationsWindowController.h"

#include "support/TWText.h"

#include <utility>

namespace {

constexpr auto FileName = "Applications.plist";
constexpr auto HelpAnchor = "Applications";
constexpr auto NotSavedTitle = "The applications could not be saved.";
constexpr auto NotAddedTitle = "Not every application could be added.";
constexpr auto NotText = "\"%@\" cannot be in the list, because its path is not valid UTF-8.";
constexpr auto OK = "OK";

}

// No application is quit unless the user has chosen it: nothing stands in for a list that cannot be read.
TWApplicationsWindowController::TWApplicationsWindowController(
    const TWEditorContext& context, const TWDictionaryWindowController&)
    : context_(context)
    , list_(context.dataFolder, FileName, [](TWListState, const auto&) { return std::vector<TWApplicationsRecord>(); })
    , finder_(context.deletion.runLoop, context.programs.applications)
    , opener_(context.deletion.runLoop, context.programs.applications)
    , notes_(context.deletion, context.programs.applications, [this] {
        if (view_)
            view_->notesChanged();
    })
{
    list_.setChanged([this] { listChanged(); });
}

void TWApplicationsWindowController::awakeFromNib(TWLaunchKind)
{
    list_.load();
}

TWApplicationsCleanerInfo TWApplicationsWindowController::settings() const
{
    return { list_.live(), forceQuit(), timeout(), { problem() } };
}

bool TWApplicationsWindowController::forceQuit() const
{
    return context_.settings.boolean(TWKey::ApplicationsForceQuit);
}

std::string TWApplicationsWindowController::setForceQuit(bool forceQuit)
{
    context_.settings.set(TWKey::ApplicationsForceQuit, forceQuit);
    return context_.settings.userDefaults().synchronize();
}

const std::vector<std::int32_t>& TWApplicationsWindowController::timeouts()
{
    static const std::vector<std::int32_t> timeouts{ 5, 10, 30, 60, 120, 300 };
    return timeouts;
}

std::int32_t TWApplicationsWindowController::timeout() const
{
    return context_.settings.integer(TWKey::ApplicationsTimeout);
}

std::string TWApplicationsWindowController::setTimeout(std::int32_t seconds)
{
    context_.settings.set(TWKey::ApplicationsTimeout, std::int64_t{ seconds });
    return context_.settings.userDefaults().synchronize();
}

std::optional<TWApplicationsRecord> TWApplicationsWindowController::recordFor(
    const std::string& path, std::string& problem) const
{
    const auto application = context_.programs.applications.open(path, problem);
    return application ? recordOf(*application, problem) : std::nullopt;
}

std::optional<TWApplicationsRecord> TWApplicationsWindowController::recordOf(
    const TWApplication& application, std::string& problem) const
{
    if (!TWText::isValidUTF8(application.path)) {
        problem = TWText::fill(NotText, { TWText::oneLine(application.path) });
        return std::nullopt;
    }
    const auto& name = application.name.empty() ? application.executable : application.name;
    return TWApplicationsRecord{ places().abbreviate(application.path), TWText::validUTF8(name) };
}

void TWApplicationsWindowController::add(const std::vector<TWApplication>& applications)
{
    std::vector<TWApplicationFinder::Opened> opened;
    opened.reserve(applications.size());
    for (const auto& application : applications)
        opened.push_back({ application, "" });
    append(opened);
}

// Paths that arrive while others are opened wait for these, so that the list keeps the order.
void TWApplicationsWindowController::addPaths(const std::vector<std::string>& paths)
{
    waiting_.insert(waiting_.end(), paths.begin(), paths.end());
    if (!isOpening_ && !waiting_.empty())
        openWaiting();
}

void TWApplicationsWindowController::openWaiting()
{
    isOpening_ = true;
    opener_.open(std::exchange(waiting_, {}), [this](const auto& opened) {
        isOpening_ = false;
        append(opened);
        addPaths({}); // those that wait
    });
}

void TWApplicationsWindowController::append(const std::vector<TWApplicationFinder::Opened>& opened)
{
    std::vector<TWApplicationsRecord> added;
    std::vector<std::string> problems;
    for (const auto& each : opened) {
        auto problem = each.problem;
        if (auto record = each.application ? recordOf(*each.application, problem) : std::nullopt)
            added.push_back(std::move(*record));
        else
            problems.push_back(std::move(problem));
    }
    if (!added.empty()) {
        list_.edit([&](auto& records) { records.insert(records.end(), added.begin(), added.end()); });
        listChanged();
        if (view_)
            view_->selectRow(recordCount() - 1);
    }
    if (!problems.empty())
        context_.alerts.show({ NotAddedTitle, TWText::join(problems, "\n"), OK, "" }, [](TWAnswer) {});
}

void TWApplicationsWindowController::remove()
{
    if (view_ && view_->selectedRow() != -1)
        removeEntry(view_->selectedRow());
}

void TWApplicationsWindowController::removeEntry(int row)
{
    list_.edit([&](auto& records) { records.erase(records.begin() + row); });
    listChanged();
}

void TWApplicationsWindowController::insertEntry(int row, TWApplicationsRecord record)
{
    list_.edit([&](auto& records) { records.insert(records.begin() + row, std::move(record)); });
    listChanged();
}

std::string TWApplicationsWindowController::absolutePath(int row) const
{
    return places().expand(applicationsArray()[static_cast<std::size_t>(row)].path);
}

void TWApplicationsWindowController::sheetOpened()
{
    notes_.clear();
    sheetIsOpen_ = true;
    findNotes();
}

void TWApplicationsWindowController::sheetClosed()
{
    sheetIsOpen_ = false;
    notes_.clear();
    finder_.stop();
    opener_.stop(); // nothing may be added after OK has saved the list
    waiting_.clear();
    isOpening_ = false;
}

void TWApplicationsWindowController::ok()
{
    const auto problem = write();
    if (!problem.empty())
        context_.alerts.show({ NotSavedTitle, problem, OK, "" }, [](TWAnswer) {});
    else if (view_)
        view_->closeSheet();
}

void TWApplicationsWindowController::help()
{
    if (view_)
        view_->openHelpAnchor(HelpAnchor);
}

void TWApplicationsWindowController::listChanged()
{
    occurrences_.clear();
    for (int row = 0; row < recordCount(); ++row)
        ++occurrences_[absolutePath(row)];
    if (view_)
        view_->reloadTable();
    if (sheetIsOpen_)
        findNotes();
}

void TWApplicationsWindowController::findNotes()
{
    std::vector<std::string> paths;
    for (const auto& each : occurrences_)
        paths.push_back(each.first);
    notes_.find(std::move(paths));
}

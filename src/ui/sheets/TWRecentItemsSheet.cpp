#include "ui/sheets/TWRecentItemsSheet.h"

#include "ui/sheets/TWApplicationChooser.h"
#include "ui/sheets/TWFoundKeysWindow.h"

namespace {

// The preferred size, in characters and lines of text.
constexpr int SheetWidth = 190;
constexpr int SheetHeight = 34;

}

TWRecentItemsSheet::TWRecentItemsSheet(
    TWRecentItemsWindowController& controller, TWKeepWindowController& keepList, QWidget* parent)
    : TWRulesSheet(controller, keepList, "recentItems", tr("Recent Items"), parent)
{
    setPreferredSize(SheetWidth, SheetHeight);
    setRules(columns(),
        { tr("The Recent Items cleaner carries out every active &rule: it removes the entries with the keys from the "
             "file or deletes the file. Changes take effect immediately. OK also saves them."),
            tr("Rules"), tr("No rules yet. Press + to choose an application, or drop its preference file here."),
            tr("Add a rule for an application"), tr("Remove the selected rule"),
            tr("The name \"%1\" is not valid UTF-8, so a rule cannot hold it.") });
    controller.setView(this);
    controller.setRecentItemsView(this);
}

TWRecentItemsSheet::~TWRecentItemsSheet()
{
    controller().setRecentItemsView(nullptr);
    controller().setView(nullptr);
}

std::vector<TWRecordColumn> TWRecentItemsSheet::columns()
{
    using Column = TWRecordColumn;
    return {
        activeColumn(),
        Column::text(
            "source", tr("Source"), [this](int row) { return rule(row).source; },
            [this](int row, const std::string& source) { controller().setSource(row, source); }),
        Column::path(
            "filePath", tr("File path"), [this](int row) { return rule(row).filePath; },
            [this](int row, const std::string& path) { controller().setFilePath(row, path); }),
        Column::check(
            "deleteFile", tr("Delete file"), [this](int row) { return rule(row).deleteFile; },
            [this](int row, bool deleteFile) { controller().setDeleteFile(row, deleteFile); }),
        Column::text(
            "keys", tr("Keys"), [this](int row) { return rule(row).keys; },
            [this](int row, const std::string& keys) { controller().setKeys(row, keys); })
            .usedIf([this](int row) { return !rule(row).deleteFile; }),
        noteColumn(),
    };
}

QString TWRecentItemsSheet::whyNotKept(int row) const
{
    if (rule(row).filePath.find('*') == std::string::npos)
        return {};
    return tr("The keep list cannot hold a path with \"*\". Keep the files one by one in the preview.");
}

void TWRecentItemsSheet::selectApplication(
    const ApplicationPanel& panel, std::function<void(std::optional<TWApplication>)> answered)
{
    const TWApplicationChooser::Texts texts{ TWQtText::shown(panel.title), TWQtText::shown(panel.message),
        TWQtText::shown(panel.prompt) };
    auto* chooser = new TWApplicationChooser(
        controller().finder(), controller().places(), texts, TWApplicationChooser::Number::One,
        [answered = std::move(answered)](const std::vector<TWApplication>& chosen) {
            answered(chosen.empty() ? std::nullopt : std::optional(chosen.front()));
        },
        this);
    chooser->open();
}

void TWRecentItemsSheet::lookingChanged()
{
    if (controller().isLooking())
        showNotice(tr("Looking for recent items of %1...").arg(TWQtText::shown(controller().foundAppName())));
    else
        showMessage({});
}

void TWRecentItemsSheet::showFoundKeys(const std::string& title, const std::string& explanation)
{
    foundKeys_ = new TWFoundKeysWindow(controller(), { title, explanation }, this);
    foundKeys_->open();
}

void TWRecentItemsSheet::closeFoundKeys()
{
    if (foundKeys_)
        foundKeys_->accept();
}

std::vector<int> TWRecentItemsSheet::selectedFoundKeys() const
{
    return foundKeys_ ? foundKeys_->selectedKeys() : std::vector<int>();
}

void TWRecentItemsSheet::showFile(const std::string& path)
{
    emit fileRequested(path, [window = foundKeys_](const std::string& said) {
        if (window)
            window->showMessage(TWQtText::shown(said));
    });
}

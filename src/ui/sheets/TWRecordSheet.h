#pragma once

#include "editors/TWRecordEditor.h"
#include "ui/parts/TWRecordColumn.h"
#include "ui/sheets/TWSheet.h"

#include <QUrl>

#include <set>

class QLabel;
class TWPathChooser;
class TWRecordPane;
class TWRecordTable;

// The base class of the sheets that edit a list of records in a table. Edits act on the live list at once: OK saves
// them, closing the sheet any other way keeps them in memory only, and a line below the table says so. If an edit has
// brought a warning, OK first shows it and saves only when it is pressed again.
class TWRecordSheet : public TWSheet, protected TWRecordView {
    Q_OBJECT

protected:
    struct Texts {
        QString introduction;
        QString records; // the accessible name of the table
        QString empty; // shown in a table without records
        QString add; // the tooltip of +
        QString remove; // the tooltip of −
        QString unreadableName; // shown if the name of a file, %1, is not valid UTF-8
    };

    // The editor must outlive the sheet. The name "files" makes the object names "filesSheet" and "filesTableView".
    TWRecordSheet(TWRecordEditor&, const QString& name, const QString& title, QWidget* parent);
    ~TWRecordSheet();

    // Call this once in the constructor. It makes everything in the sheet. What belongs below the table may be added.
    void setRecords(std::vector<TWRecordColumn>, Texts, QWidget* below = nullptr);

    // What the bar says as long as the list has a problem, or "".
    virtual QString problem() const = 0;

    // The user wants to add a record or to remove the one in that row.
    virtual void addRecord() = 0;
    virtual void removeRecord(int row) = 0;

    void closeSheet() override;
    void openHelpAnchor(const std::string& anchor) override;
    void reloadTable() override;
    void notesChanged() override;
    int selectedRow() const override;
    void selectRow(int row) override;
    void choosePath(
        const std::string& title, const std::string& prompt, std::function<void(std::optional<std::string>)>) override;

    TWRecordTable& table() const { return *table_; }
    TWPathChooser& chooser() const { return *chooser_; }

    void showEvent(QShowEvent*) override;
    void hideEvent(QHideEvent*) override;

private:
    void createContent(QWidget* below);
    void createButtons();
    void createDefaultsButton();
    void ok();
    bool showNewWarnings();
    void addDropped(const QList<QUrl>& files);
    void showUnreadableName(const QString& path);
    void showUnsaved();

    TWRecordEditor& editor_;
    const QString name_;
    Texts texts_;
    TWRecordTable* table_ = nullptr;
    TWRecordPane* pane_ = nullptr;
    TWPathChooser* chooser_;
    QLabel* unsaved_; // visible while the list is not saved
    std::set<QString> knownRecords_; // descriptions of those that were saved or whose warnings the user has seen
};

#pragma once

#include "editors/TWKeepWindowController.h"
#include "ui/sheets/TWSheet.h"

#include <QUrl>

class TWPathChooser;
class TWRecordPane;
class TWRecordTable;
struct TWRecordColumn;

// The sheet of the keep list. Edits act on the live list at once: OK saves them, closing the sheet any other way keeps
// them in memory only.
class TWKeepSheet final : public TWSheet, private TWKeepView {
    Q_OBJECT

public:
    // Becomes the controller's view. The controller must outlive the sheet.
    TWKeepSheet(TWKeepWindowController&, QWidget* parent);
    ~TWKeepSheet();

protected:
    void showEvent(QShowEvent*) override;
    void hideEvent(QHideEvent*) override;

private:
    void closeSheet() override;
    void openHelpAnchor(const std::string& anchor) override;
    void reloadTable() override;
    void notesChanged() override;
    void selectRow(int row) override;

    const TWKeepEntry& entry(int row) const;
    std::vector<TWRecordColumn> columns();
    void createContent();
    void createButtons();
    void choose();
    void addName();
    void removeSelected();
    void addDropped(const QList<QUrl>& files);
    void showProblem();
    void showUnreadableName(const QString& path);

    TWKeepWindowController& controller_;
    TWRecordTable* table_;
    TWRecordPane* pane_ = nullptr;
    TWPathChooser* chooser_;
};

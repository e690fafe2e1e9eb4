#pragma once

#include "editors/TWFilesWindowController.h"
#include "ui/sheets/TWSheet.h"

#include <QUrl>

class TWPathChooser;
class TWRecordPane;
class TWRecordTable;
struct TWRecordColumn;

// The sheet of the Files editor. Edits act on the live list at once: OK saves them, closing the sheet any other way
// keeps them in memory only.
class TWFilesSheet final : public TWSheet, private TWFilesView {
    Q_OBJECT

public:
    // Becomes the controller's view. The controller must outlive the sheet.
    TWFilesSheet(TWFilesWindowController&, QWidget* parent);
    ~TWFilesSheet();

protected:
    void showEvent(QShowEvent*) override;
    void hideEvent(QHideEvent*) override;

private:
    void closeSheet() override;
    void openHelpAnchor(const std::string& anchor) override;
    void reloadTable() override;
    void notesChanged() override;
    int selectedRow() const override;
    void selectRow(int row) override;
    void choosePath(
        const std::string& title, const std::string& prompt, std::function<void(std::optional<std::string>)>) override;

    const TWFilesRule& rule(int row) const;
    std::vector<TWRecordColumn> columns();
    void createContent();
    void createButtons();
    void removeSelected();
    void addDropped(const QList<QUrl>& files);
    void showUnreadableName(const QString& path);

    TWFilesWindowController& controller_;
    TWRecordTable* table_;
    TWRecordPane* pane_ = nullptr;
    TWPathChooser* chooser_;
};

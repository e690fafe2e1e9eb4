#pragma once

#include "editors/TWVolumesWindowController.h"
#include "ui/parts/TWRecordColumn.h"
#include "ui/sheets/TWSheet.h"

class QLabel;
class TWQuietLabel;
class TWRecordTable;

// The sheet of the Volumes editor. The table follows the mounted volumes.
class TWVolumesSheet final : public TWSheet, private TWVolumesView {
    Q_OBJECT

public:
    // Becomes the controller's view. The controller must outlive the sheet.
    TWVolumesSheet(TWVolumesWindowController&, QWidget* parent);
    ~TWVolumesSheet();

protected:
    void showEvent(QShowEvent*) override;
    void hideEvent(QHideEvent*) override;

private:
    void closeSheet() override;
    void openHelpAnchor(const std::string& anchor) override;
    void reloadTable() override;
    void notesChanged() override;
    void showMessage(const std::string&) override;

    std::vector<TWRecordColumn> columns();
    QWidget* createContent();
    void createButtons();
    const TWVolumesRecord& volume(int row) const { return controller_.volumesArray()[static_cast<std::size_t>(row)]; }
    TWRecordNote note(int row) const;
    void selectionChanged();
    void showState();

    TWVolumesWindowController& controller_;
    TWRecordTable* table_;
    TWQuietLabel* note_; // of the selected volume
    QLabel* unsaved_; // visible while the list is not saved
    std::string selectedPath_;
};

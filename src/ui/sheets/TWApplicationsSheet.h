#pragma once

#include "editors/TWApplicationsWindowController.h"
#include "ui/parts/TWApplicationIcons.h"
#include "ui/sheets/TWRecordSheet.h"

class QComboBox;
class TWCheckBox;

// The sheet of the Applications editor. The list is saved by OK, the settings below it at once.
class TWApplicationsSheet final : public TWRecordSheet {
    Q_OBJECT

public:
    // Becomes the controller's view. The controller must outlive the sheet.
    TWApplicationsSheet(TWApplicationsWindowController&, QWidget* parent);
    ~TWApplicationsSheet();

    void refresh() override;

protected:
    void showEvent(QShowEvent*) override;

private:
    QString problem() const override;
    void addRecord() override;
    void removeRecord(int row) override;

    std::vector<TWRecordColumn> columns();
    QWidget* createSettings();
    TWRecordNote note(int row) const;

    TWApplicationsWindowController& controller_;
    const TWApplicationIcons icons_;
    QComboBox* timeoutPopUpButton_; // the data of an item is its number of seconds
    TWCheckBox* forceQuitButton_;
};

#pragma once

#include "editors/TWKeepWindowController.h"
#include "ui/sheets/TWRecordSheet.h"

// The sheet of the keep list.
class TWKeepSheet final : public TWRecordSheet {
    Q_OBJECT

public:
    // Becomes the controller's view. The controller must outlive the sheet.
    TWKeepSheet(TWKeepWindowController&, QWidget* parent);
    ~TWKeepSheet();

protected:
    void showEvent(QShowEvent*) override;

private:
    QString problem() const override;
    void addRecord() override;
    void removeRecord(int row) override;

    std::vector<TWRecordColumn> columns();
    const TWKeepEntry& entry(int row) const;
    void addName();

    TWKeepWindowController& controller_;
};

#pragma once

#include "editors/TWFilesWindowController.h"
#include "ui/sheets/TWRecordSheet.h"

class TWKeepWindowController;

// The sheet of the Files editor.
class TWFilesSheet final : public TWRecordSheet {
    Q_OBJECT

public:
    // Becomes the controller's view. Both controllers must outlive the sheet.
    TWFilesSheet(TWFilesWindowController&, TWKeepWindowController&, QWidget* parent);
    ~TWFilesSheet();

protected:
    void changeEvent(QEvent*) override;

private:
    QString problem() const override;
    void addRecord() override;
    void removeRecord(int row) override;

    std::vector<TWRecordColumn> columns();
    const TWFilesRule& rule(int row) const;
    void createActions();
    void keepSelected();

    TWFilesWindowController& controller_;
    TWKeepWindowController& keepList_;
};

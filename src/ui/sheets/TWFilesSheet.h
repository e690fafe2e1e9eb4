#pragma once

#include "editors/TWFilesWindowController.h"
#include "ui/sheets/TWRulesSheet.h"

// The sheet of the Files editor.
class TWFilesSheet final : public TWRulesSheet<TWFilesWindowController> {
    Q_OBJECT

public:
    // Becomes the controller's view. Both controllers must outlive the sheet.
    TWFilesSheet(TWFilesWindowController&, TWKeepWindowController&, QWidget* parent);
    ~TWFilesSheet();

protected:
    void changeEvent(QEvent*) override;

private:
    std::string ruleName(int row) const override { return rule(row).description; }

    std::vector<TWRecordColumn> columns();
    void createDictionaryButton();
};

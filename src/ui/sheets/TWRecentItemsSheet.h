#pragma once

#include "editors/TWRecentItemsWindowController.h"
#include "ui/sheets/TWRulesSheet.h"

#include <QPointer>

class TWFoundKeysWindow;

// The sheet of the Recent Items editor.
class TWRecentItemsSheet final : public TWRulesSheet<TWRecentItemsWindowController>, private TWRecentItemsView {
    Q_OBJECT

public:
    // Becomes the controller's view. Both controllers must outlive the sheet.
    TWRecentItemsSheet(TWRecentItemsWindowController&, TWKeepWindowController&, QWidget* parent);
    ~TWRecentItemsSheet();

private:
    void selectApplication(
        const ApplicationPanel&, std::function<void(std::optional<TWApplication>)> answered) override;
    void lookingChanged() override;
    void showFoundKeys(const std::string& title, const std::string& explanation) override;
    void closeFoundKeys() override;
    std::vector<int> selectedFoundKeys() const override;
    void showFile(const std::string& path) override;

    std::string ruleName(int row) const override { return rule(row).source; }
    QString whyNotKept(int row) const override;

    std::vector<TWRecordColumn> columns();

    QPointer<TWFoundKeysWindow> foundKeys_; // while it is open
};

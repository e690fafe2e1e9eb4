#pragma once

#include "ui/sheets/TWSheet.h"

class QListWidget;
class QPlainTextEdit;
class TWRecentItemsWindowController;

// Lists the keys that were found for an application, with the values of the current one, and lets the user choose those
// of which a rule is made. Deletes itself when it closes.
class TWFoundKeysWindow final : public TWSheet {
    Q_OBJECT

public:
    struct Texts {
        std::string title;
        std::string explanation;
    };

    // The controller has found keys and must outlive the window.
    TWFoundKeysWindow(TWRecentItemsWindowController&, const Texts&, QWidget* parent);

    // Rows of the controller's found keys, in ascending order.
    std::vector<int> selectedKeys() const;

    using TWSheet::showMessage;

private:
    QWidget* createContent(const std::string& explanation);
    void createButtons();
    void showValues(int row);

    TWRecentItemsWindowController& controller_;
    QListWidget* keys_;
    QPlainTextEdit* values_;
};

#pragma once

#include "editors/TWDictionaryWindowController.h"

#include <QDialog>

class QLabel;
class TWHelpWindow;
class TWMessageBar;
class TWTokenField;

// The sheet of the keyword dictionary. Whoever opens it calls the controller's loadDictionary() first.
class TWDictionarySheet final : public QDialog, private TWDictionaryView {
    Q_OBJECT

public:
    // Sets itself as the controller's view. Both outlive the sheet.
    TWDictionarySheet(TWDictionaryWindowController&, TWHelpWindow&, QWidget* parent);
    ~TWDictionarySheet();

    // Escape and the window's own close button do what Cancel does.
    void reject() override;

protected:
    void showEvent(QShowEvent*) override;

private:
    void closeSheet() override;
    void openHelpAnchor(const std::string& anchor) override;
    void wordsChanged() override;
    void showProblem(const std::string& problem) override;

    QWidget* createButtons();
    void wordsEdited();
    void save();
    void showCount();

    TWDictionaryWindowController& controller_;
    TWHelpWindow& helpWindow_;
    TWMessageBar* messageBar_;
    TWTokenField* field_;
    QLabel* count_;
};

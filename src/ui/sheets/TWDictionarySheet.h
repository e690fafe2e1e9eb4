#pragma once

#include "editors/TWDictionaryWindowController.h"
#include "ui/parts/TWTokenField.h"
#include "ui/sheets/TWSheet.h"

class QLabel;

// The sheet of the keyword dictionary.
class TWDictionarySheet final : public TWSheet, private TWDictionaryView {
    Q_OBJECT

public:
    // Becomes the controller's view. The controller must outlive the sheet.
    TWDictionarySheet(TWDictionaryWindowController&, QWidget* parent);
    ~TWDictionarySheet();

    // Loads the saved words before it opens.
    void open() override;

    // Escape and the window's close button do the same as Cancel.
    void reject() override;

private:
    void closeSheet() override;
    void openHelpAnchor(const std::string& anchor) override;
    void wordsChanged() override;
    void showProblem(const std::string& problem) override;

    QWidget* createContent();
    void createButtons();
    void offerToRestore(const TWPlacedWords& removed, const TWPlacedWords& inserted);
    void wordsEdited();
    void save();
    void showState();

    TWDictionaryWindowController& controller_;
    TWTokenField* field_;
    QLabel* count_;
    QLabel* unsaved_; // visible while the words are not saved
};

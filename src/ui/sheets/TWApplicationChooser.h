#pragma once

#include "editors/TWRecentItemsWindowController.h"
#include "ui/sheets/TWSheet.h"

class QLineEdit;
class TWApplicationList;
class TWPathChooser;

// Lets the user choose one of the installed applications, or another one by its file. Deletes itself when it closes.
class TWApplicationChooser final : public TWSheet {
    Q_OBJECT

public:
    // Answers once it has closed. The controller must outlive the dialog.
    TWApplicationChooser(TWRecentItemsWindowController&, const TWRecentItemsView::ApplicationPanel&,
        std::function<void(std::optional<TWApplication>)> answered, QWidget* parent);

protected:
    // Keys that move in a list move in the list of applications while the search field has the focus.
    bool eventFilter(QObject*, QEvent*) override;

private:
    QWidget* createContent();
    void createButtons(const QString& prompt);
    void findApplications();
    void search();
    void chooseOther();
    void choose(const TWApplication&);

    TWRecentItemsWindowController& controller_;
    TWPathChooser* chooser_;
    QLineEdit* searchField_;
    TWApplicationList* list_;
    QPushButton* chooseButton_ = nullptr;
    std::optional<TWApplication> chosen_;
};

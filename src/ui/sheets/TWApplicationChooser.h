#pragma once

#include "editors/TWApplicationFinder.h"
#include "ui/sheets/TWSheet.h"

class QLineEdit;
class TWApplicationList;
class TWPathChooser;
struct TWPlaces;

// Lets the user choose installed applications, or another one by its file. Deletes itself when it closes.
class TWApplicationChooser final : public TWSheet {
    Q_OBJECT

public:
    enum class Number { One, Several };

    struct Texts {
        QString title;
        QString message;
        QString prompt; // the button that chooses
    };

    // Answers once it has closed, with nothing if the user has cancelled. The finder must outlive the dialog.
    TWApplicationChooser(TWApplicationFinder&, const TWPlaces&, const Texts&, Number,
        std::function<void(std::vector<TWApplication>)> answered, QWidget* parent);

protected:
    // Keys that move in a list move in the list of applications while the search field has the focus.
    bool eventFilter(QObject*, QEvent*) override;

private:
    QWidget* createContent();
    void createButtons(const QString& prompt);
    void findApplications();
    void search();
    void chooseOther();
    void choose(std::vector<TWApplication>);

    TWApplicationFinder& finder_;
    const TWPlaces& places_;
    TWPathChooser* chooser_;
    QLineEdit* searchField_;
    TWApplicationList* list_;
    QPushButton* chooseButton_ = nullptr;
    std::vector<TWApplication> chosen_;
};

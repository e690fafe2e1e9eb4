#pragma once

#include <QDialog>
#include <QDialogButtonBox>

#include <functional>

class QPushButton;
class QVBoxLayout;
class TWMessageBar;

// The base of all sheets. From top to bottom: an introduction, a bar for what is wrong, a bar that offers to undo a
// deletion, the content, and the buttons in the order of the desktop.
//
// A sheet is never larger than its screen; what has no room scrolls, and the buttons stay in sight. Tab leads through
// the content to OK or Save, to Cancel, to the other buttons, to Help and round again. Return presses the button that
// has the focus, else the default button.
class TWSheet : public QDialog {
    Q_OBJECT

public:
    TWSheet(const QString& objectName, const QString& title, QWidget* parent);

signals:
    // The user wants to read that page of the help.
    void helpRequested(const QString& page);

protected:
    // Call these in the constructor: the introduction, the content with the widget that has the focus first, the
    // buttons. Alt with the introduction's marked letter leads to that widget too.
    void setIntroduction(const QString& text);
    void setContent(QWidget* content, QWidget* firstFocus);
    void setPreferredSize(int characters, int lines);
    QPushButton* addButton(QDialogButtonBox::StandardButton, const QString& objectName, const QString& accessibleName);
    QPushButton* addButton(const QString& text, QDialogButtonBox::ButtonRole, const QString& objectName);

    // The button that Return presses: never one that loses something.
    void setDefaultButton(QPushButton*);

    // What is wrong with the saved list is said as long as it lasts, above a message that comes and goes.
    void setProblem(const QString& problem);
    void showMessage(const QString& message);

    // Offers to take back a deletion, with a button and Ctrl+Z, while the sheet is open. Earlier ones can be taken back
    // afterwards. The text says what was deleted.
    void offerUndo(const QString& text, std::function<void()> undo);
    void undo();
    void forgetUndo();

    bool event(QEvent*) override;
    void showEvent(QShowEvent*) override;
    void hideEvent(QHideEvent*) override;
    void keyPressEvent(QKeyEvent*) override;

private:
    struct UndoStep {
        QString text;
        std::function<void()> undo;
    };

    void setUpButton(QPushButton*, const QString& objectName);
    void arrangeTabOrder();
    void showMessages();
    void showUndo();

    QVBoxLayout* column_; // all but the buttons
    TWMessageBar* messageBar_;
    TWMessageBar* undoBar_;
    QDialogButtonBox* buttons_;
    QWidget* firstFocus_ = nullptr;
    QSize preferredSize_; // not set: what the content wants
    QString problem_;
    QString message_;
    std::vector<UndoStep> undoSteps_; // the newest last
};

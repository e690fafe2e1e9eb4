#pragma once

#include <QDialog>
#include <QDialogButtonBox>

#include <functional>
#include <string>

class QPushButton;
class QVBoxLayout;
class TWMessageBar;

// The base class of all sheets. From top to bottom: an introduction, a bar for problems, a bar that offers to undo a
// deletion, the content, and the buttons in the order of the desktop.
//
// A sheet is never larger than its screen: the content scrolls if there is not enough room, and the buttons stay in
// sight. Tab leads through the content to OK or Save, Cancel, the other buttons, Help and back to the start. Return
// presses the button that has the focus, else the default button.
class TWSheet : public QDialog {
    Q_OBJECT

public:
    using Said = std::function<void(const std::string&)>;

    TWSheet(const QString& objectName, const QString& title, QWidget* parent);

    // Shows the settings anew, because a command may have changed them.
    virtual void refresh() { }

signals:
    // The user has asked for that page of the help.
    void helpRequested(const QString& page);

    // The user wants to open the sheet of that editor on top of this one.
    void editorRequested(const char* editor);

    // The user wants to see that file in the file manager. said is called on a later turn, with one line or with "" if
    // there is nothing to say.
    void fileRequested(const std::string& path, const TWSheet::Said& said);

    // The same, but wants to open the file.
    void openRequested(const std::string& path, const TWSheet::Said& said);

protected:
    // For the constructors of sheets. setContent() takes the content and the widget that gets the focus first; Alt with
    // the marked letter of the introduction also leads to that widget.
    void setIntroduction(const QString& text);
    void setContent(QWidget* content, QWidget* firstFocus);
    void setPreferredSize(int characters, int lines);
    QPushButton* addButton(QDialogButtonBox::StandardButton, const QString& objectName, const QString& accessibleName);
    QPushButton* addButton(const QString& text, QDialogButtonBox::ButtonRole, const QString& objectName);

    // Sets the button that Return presses. It must not be one that loses something.
    void setDefaultButton(QPushButton*);

    enum class Cause { DamagedFile, Other };

    // The problem of the list stays in the bar as long as it lasts, above a message that comes and goes.
    void setProblem(const QString& problem, Cause = Cause::DamagedFile);
    void showMessage(const QString& message);

    // Says in a bar of its own, until the next message, that something has gone well.
    void showNotice(const QString& notice);

    // Offers to undo the latest change with Ctrl+Z while the sheet is open, and earlier ones after it. The text says
    // what was deleted; if it is not "", the bar with the button to undo appears.
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

    QVBoxLayout* column_; // everything except the buttons
    TWMessageBar* messageBar_;
    TWMessageBar* noticeBar_;
    TWMessageBar* undoBar_;
    QDialogButtonBox* buttons_;
    QWidget* firstFocus_ = nullptr;
    QSize preferredSize_; // if not set, the size that the content wants
    QString problem_;
    Cause cause_ = Cause::DamagedFile; // of the problem
    QString message_;
    std::vector<UndoStep> undoSteps_; // the newest last
};

#pragma once

#include <QKeySequence>
#include <QList>
#include <QString>

#include <functional>

class QAction;
class QKeyEvent;
class QPushButton;
class QWidget;
struct TWPlaces;

// Controls, keys and dialogs that several windows make in the same way.
namespace TWControls {

QPushButton* button(const QString& text, const QString& objectName, const QString& accessibleName);

// Gives the window that title, to which the sandbox is added if there is one.
void setTitle(QWidget& window, const QString& title, const TWPlaces&);

// Adds an action whose shortcuts work anywhere in the window.
void addWindowAction(QWidget& window, const QString& text, const QList<QKeySequence>&, std::function<void()>);

// Adds an entry to the table's context menu. Its shortcuts work only while the table has the focus.
QAction* addTableAction(
    QWidget& table, const QString& objectName, const QString& text, const QList<QKeySequence>&, std::function<void()>);

// If the key is Return or Enter and a button or check box of the window has the focus, presses that and returns true.
// Otherwise Return would press the default button, which may delete something.
bool pressFocused(const QWidget& window, const QKeyEvent&);

// Asks under which name to save a file. The extension of the suggested name is added to a name without one.
void askWhereToSave(QWidget* window, const QString& objectName, const QString& title, const QString& folder,
    const QString& suggestedName, std::function<void(const QString& path)> chosen);

}

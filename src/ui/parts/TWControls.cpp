#include "ui/parts/TWControls.h"

#include "platform/TWPlaces.h"
#include "ui/parts/TWQtText.h"

#include <QAction>
#include <QCoreApplication>
#include <QFileDialog>
#include <QKeyEvent>
#include <QPushButton>

namespace {

constexpr auto TitleInSandbox = QT_TRANSLATE_NOOP("TWControls", "%1 (Sandbox %2)");

}

QPushButton* TWControls::button(const QString& text, const QString& objectName, const QString& accessibleName)
{
    auto* button = new QPushButton(text);
    button->setObjectName(objectName);
    button->setAccessibleName(accessibleName);
    return button;
}

void TWControls::setTitle(QWidget& window, const QString& title, const TWPlaces& places)
{
    window.setWindowTitle(places.sandboxed() ? QCoreApplication::translate("TWControls", TitleInSandbox)
                                                   .arg(title, TWQtText::titlePart(places.sandboxRoot))
                                             : title);
}

void TWControls::addWindowAction(
    QWidget& window, const QString& text, const QList<QKeySequence>& shortcuts, std::function<void()> call)
{
    auto* action = new QAction(text, &window);
    action->setShortcuts(shortcuts);
    QObject::connect(action, &QAction::triggered, &window, std::move(call));
    window.addAction(action);
}

QAction* TWControls::addTableAction(QWidget& table, const QString& objectName, const QString& text,
    const QList<QKeySequence>& shortcuts, std::function<void()> call)
{
    auto* action = new QAction(text, &table);
    action->setObjectName(objectName);
    action->setShortcuts(shortcuts);
    action->setShortcutContext(Qt::WidgetShortcut);
    QObject::connect(action, &QAction::triggered, &table, std::move(call));
    table.addAction(action);
    table.setContextMenuPolicy(Qt::ActionsContextMenu);
    return action;
}

bool TWControls::pressFocused(const QWidget& window, const QKeyEvent& event)
{
    auto* focused = qobject_cast<QAbstractButton*>(window.focusWidget());
    if (!focused || (event.key() != Qt::Key_Return && event.key() != Qt::Key_Enter))
        return false;
    // A box is ticked by the space bar. One Return too many must not switch a cleaner on.
    if (!focused->isCheckable())
        focused->click();
    return true;
}

void TWControls::askWhereToSave(QWidget* window, const QString& objectName, const QString& title, const QString& folder,
    const QString& suggestedName, std::function<void(const QString& path)> chosen)
{
    auto* dialog = new QFileDialog(window, title, folder);
    dialog->setObjectName(objectName);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(suggestedName.section('.', -1));
    dialog->selectFile(suggestedName);
    QObject::connect(dialog, &QFileDialog::fileSelected, window, std::move(chosen));
    dialog->open();
}

#pragma once

#include "editors/TWFilesWindowController.h"

#include <QDialog>
#include <QFileDialog>
#include <QPointer>

class QLabel;
class QMenu;
class QToolButton;
class TWFilesTable;
class TWFilesTableModel;
class TWHelpWindow;
class TWMessageBar;

// The sheet of the Files editor. Edits act on the live list at once: OK saves them, closing the sheet any other way
// keeps them in memory only.
class TWFilesSheet final : public QDialog, private TWFilesView {
    Q_OBJECT

public:
    // Sets itself as the controller's view. Both outlive the sheet.
    TWFilesSheet(TWFilesWindowController&, TWHelpWindow&, QWidget* parent);
    ~TWFilesSheet();

protected:
    void showEvent(QShowEvent*) override;
    void hideEvent(QHideEvent*) override;

private:
    void closeSheet() override;
    void openHelpAnchor(const std::string& anchor) override;
    void reloadTable() override;
    void notesChanged() override;
    int selectedRow() const override;
    void selectRow(int row) override;
    void choosePath(
        const std::string& title, const std::string& prompt, std::function<void(std::optional<std::string>)>) override;

    void createTable();
    QLayout* createRuleButtons();
    QWidget* createSheetButtons();
    void finishEditing();
    void showSelection();
    void showMessage(const QString& message);
    void openChooser(QFileDialog::FileMode);
    void answerPath(std::optional<std::string> path);
    std::optional<std::string> pathBytes(const QString& path);
    void addDropped(const QList<QUrl>& files);

    TWFilesWindowController& controller_;
    TWHelpWindow& helpWindow_;
    TWFilesTableModel* model_;
    TWFilesTable* table_;
    TWMessageBar* messageBar_;
    QToolButton* addButton_ = nullptr;
    QToolButton* removeButton_ = nullptr;
    QLabel* noteLabel_ = nullptr;
    QMenu* addMenu_ = nullptr;

    // While a path is being chosen.
    QPointer<QFileDialog> chooser_;
    QString chooserTitle_;
    QString chooserPrompt_;
    std::function<void(std::optional<std::string>)> chosen_;
    std::optional<std::string> droppedPath_;
};

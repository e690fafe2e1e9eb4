#pragma once

#include "app/TWResultsActions.h"
#include "app/TWResultsWindowController.h"
#include "ui/windows/TWResultsFilter.h"

#include <QWidget>

class QAction;
class QLabel;
class QLayout;
class QPushButton;
class QTableView;
class TWMessageBar;
class TWResultsFilterBar;
class TWResultsModel;

// Shows the lines of the latest cleaning, which the user can filter, copy and save. What the selected line is about can
// be shown in the file manager or kept from now on. Closing the window hides it.
class TWResultsWindow final : public QWidget, public TWResultsView {
    Q_OBJECT

public:
    // Becomes the controller's view. The controller must outlive the window. The save dialog opens in the home folder.
    TWResultsWindow(TWResultsWindowController&, const TWResultsActions::Context&, const QString& iconFolder,
        const QString& homeFolder);
    ~TWResultsWindow();

    // Writes the lines that the table shows as UTF-8 text. Returns "" or one line for the user that names the file.
    QString save(const QString& path) const;

    void messagesRemoved() override;
    void messagesAdded(std::size_t count) override;

signals:
    void helpRequested();

protected:
    void keyPressEvent(QKeyEvent*) override;

private:
    enum class Direction { Next, Previous };

    void createTable();
    QLayout* createFooter();
    void createActions();
    QPushButton* createButton(QAction*, const char* name);
    void filterChanged();
    void linesChanged();
    void followLines();
    void watchSelection();
    void selectionChanged();
    std::string selectedPath() const;
    void showFailure(Direction);
    std::vector<std::size_t> shownFailures() const;
    QModelIndex shownIndex(std::size_t line) const;
    void showInFolder();
    void keep();
    void say(const std::string& sentence);
    void copy();
    void saveAs();
    QString lineAt(int row) const;

    TWResultsWindowController& controller_;
    const QString homeFolder_;
    TWResultsModel* model_;
    TWResultsFilter* filter_;
    TWResultsActions pathActions_;
    TWResultsFilterBar* filterBar_;
    TWMessageBar* messageBar_;
    QTableView* table_ = nullptr;
    QLabel* empty_ = nullptr; // shown in the middle of an empty table
    QLabel* count_ = nullptr;
    QPushButton* saveButton_ = nullptr;
    QAction* saveAction_ = nullptr;
    QAction* showAction_ = nullptr; // in the file manager
    QAction* keepAction_ = nullptr;
};

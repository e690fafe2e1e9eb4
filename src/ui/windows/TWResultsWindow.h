#pragma once

#include "app/TWResultsWindowController.h"
#include "ui/windows/TWResultsFilter.h"

#include <QWidget>

#include <functional>

class QAction;
class QComboBox;
class QLabel;
class QLayout;
class QLineEdit;
class QPushButton;
class QTableView;
class TWResultsModel;

// Shows the lines of the latest cleaning, which the user can filter, copy and save. Closing the window hides it.
class TWResultsWindow final : public QWidget, public TWResultsView {
    Q_OBJECT

public:
    // Becomes the controller's view. The controller must outlive the window. The save dialog opens in the home folder.
    TWResultsWindow(TWResultsWindowController&, const QString& iconFolder, const QString& homeFolder);
    ~TWResultsWindow();

    // Writes the lines that the table shows as UTF-8 text. Returns "" or one line for the user that names the file.
    QString save(const QString& path) const;

    void messagesRemoved() override;
    void messagesAdded(std::size_t count) override;

private:
    QLayout* createFilter();
    void createTable();
    QLayout* createFooter();
    void createActions();
    QAction* addTableAction(const char* name, const QString& text, const QKeySequence&, void (TWResultsWindow::*)());
    void addWindowAction(const QString& text, const QList<QKeySequence>&, std::function<void()>);
    void filterChanged();
    void linesChanged();
    void followLines();
    void copy();
    void selectAll();
    void saveAs();
    QString lineAt(int row) const;

    TWResultsWindowController& controller_;
    const QString homeFolder_;
    TWResultsModel* model_;
    TWResultsFilter* filter_;
    QLineEdit* filterText_ = nullptr;
    QComboBox* filterKind_ = nullptr;
    QTableView* table_ = nullptr;
    QLabel* empty_ = nullptr; // shown in the middle of an empty table
    QLabel* count_ = nullptr;
    QPushButton* saveButton_ = nullptr;
    QAction* saveAction_ = nullptr;
};

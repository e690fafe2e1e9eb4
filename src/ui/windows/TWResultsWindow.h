#pragma once

#include "app/TWResultsWindowController.h"
#include "ui/windows/TWResultsFilter.h"

#include <QWidget>

class QComboBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QTableView;
class TWResultsModel;

// The lines of the latest cleaning, to be read, filtered, copied and saved. Closing it hides it.
class TWResultsWindow final : public QWidget, public TWResultsView {
    Q_OBJECT

public:
    // Becomes the controller's view. The controller outlives the window.
    TWResultsWindow(TWResultsWindowController&, const QString& iconFolder);
    ~TWResultsWindow();

    // Writes the lines that the table shows, as UTF-8 text. Nothing, or one line for the user that names the file.
    QString save(const QString& path) const;

    void messagesRemoved() override;
    void messagesAdded(std::size_t count) override;

private:
    QHBoxLayout* makeFilter();
    void makeTable();
    QHBoxLayout* makeFooter();
    void makeActions();
    QAction* addTableAction(const char* name, const QString& text, const QKeySequence&, void (TWResultsWindow::*)());
    void filterChanged();
    void linesChanged();
    void copy();
    void selectAll();
    void saveAs();
    QString lineAt(int row) const;

    TWResultsWindowController& controller_;
    TWResultsModel* model_;
    TWResultsFilter* filter_;
    QLineEdit* filterText_ = nullptr;
    QComboBox* filterKind_ = nullptr;
    QTableView* table_ = nullptr;
    QLabel* empty_ = nullptr; // in the middle of an empty table
    QLabel* count_ = nullptr;
};

#pragma once

#include "app/TWPreviewWindowController.h"

#include <QWidget>

class QAction;
class QComboBox;
class QLabel;
class QLayout;
class QLineEdit;
class QMenu;
class QPushButton;
class QTableView;
class TWMessageBar;
class TWPreviewModel;
class TWPreviewTree;
class TWQuietLabel;
class TWSpinner;

// Shows what Clean would delete and lets the user untick parts of it, keep some for ever and clean the rest. The window
// makes a preview when it is shown and drops it when it is closed.
class TWPreviewWindow final : public QWidget, private TWPreviewView {
    Q_OBJECT

public:
    // The delegate must outlive the window.
    explicit TWPreviewWindow(TWTidewellAppDelegate&);
    ~TWPreviewWindow();

    // Makes a new preview if the shown one has been cleaned.
    void renewIfCleaned();

signals:
    // The user has pressed Clean; the run begins when this signal has been handled.
    void aboutToClean();
    void helpRequested(const QString& page);

protected:
    void showEvent(QShowEvent*) override;
    void closeEvent(QCloseEvent*) override;
    void changeEvent(QEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    bool eventFilter(QObject*, QEvent*) override;

private:
    void previewReplaced() override;
    void rowsReplaced() override;
    void previewChanged() override;

    QWidget* createRight();
    void createTable();
    void createColumns();
    int sharedWidth() const;
    void fitReasons();
    QLayout* createFooter();
    void createActions();
    QMenu* createSortMenu();
    void limit(std::optional<std::uint32_t> cleaner, std::optional<std::size_t> group);
    void filter();
    void sort(int column, Qt::SortOrder);
    void wish(const TWPreviewWish&);
    void showState();
    void showDetail();
    void showSelection();
    void showKeep();
    std::vector<TWPreviewRow> selectedRows() const;
    void toggleSelected();
    void keepSelected();
    void showContents();
    void clean();
    void clearFilter();
    void refresh();
    void confirm(const char* question, const QString& button, std::function<void()> confirmed);
    void goTo(int row);
    void exportAs();

    TWTidewellAppDelegate& delegate_;
    TWPreviewWindowController controller_;
    TWPreviewModel* model_;
    TWPreviewTree* tree_;
    TWMessageBar* notice_;
    TWMessageBar* warnings_;
    TWMessageBar* message_; // how the user's latest action ended
    QLineEdit* filterText_ = nullptr;
    QComboBox* shown_ = nullptr;
    QPushButton* keepButton_ = nullptr;
    QTableView* table_ = nullptr;
    QLabel* empty_ = nullptr; // shown in the middle of an empty table
    TWQuietLabel* detail_ = nullptr; // of the current row, where the table has cut it off
    QLabel* sentence_ = nullptr;
    TWSpinner* spinner_ = nullptr;
    QPushButton* stopButton_ = nullptr;
    QPushButton* exportButton_ = nullptr;
    QPushButton* cleanButton_ = nullptr;
    QAction* contentsAction_ = nullptr;
    std::optional<TWPreviewRow> current_; // the table's current row
    QPushButton* helpButton_ = nullptr;
    QAction* toggleAction_ = nullptr;
    QAction* keepAction_ = nullptr;
    double reasonShare_ = 0; // the most of the width that paths and reasons share
    int widestReason_ = 0; // of those that have been on screen, in pixels
    bool fitting_ = false; // the window itself changes the width of the reasons
    bool sorted_ = false; // the rows that are being found are those of another order
    bool closing_ = false; // the user has confirmed that the ticks are lost
    bool wished_ = false; // the user has asked for the rows that are being found
};

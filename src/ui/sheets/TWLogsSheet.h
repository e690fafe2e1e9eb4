#pragma once

#include "editors/TWLogsWindowController.h"
#include "ui/parts/TWQuickLookOutlineView.h"
#include "ui/sheets/TWSheet.h"

class QLabel;
class QLineEdit;
class TWKeepWindowController;
class TWLogsModel;
class TWQuickLookWindow;
class TWQuietLabel;
class TWSpinner;

// The sheet of the Logs editor. The log folders are read once the sheet is on the screen.
class TWLogsSheet final : public TWSheet, private TWLogsView, private TWQuickLookOutlineViewDelegate {
    Q_OBJECT

    // What the preview shows, as the tree had it.
    struct LookedAt {
        std::string path;
        TWFileKind kind = TWFileKind::Other;
        std::uint64_t bytes = 0;
    };

public:
    // Becomes the controller's view. Both controllers must outlive the sheet.
    TWLogsSheet(TWLogsWindowController&, TWKeepWindowController&, QWidget* parent);
    ~TWLogsSheet();

protected:
    void paintEvent(QPaintEvent*) override;
    void showEvent(QShowEvent*) override;
    void hideEvent(QHideEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    bool eventFilter(QObject*, QEvent*) override;

private:
    void closeSheet() override;
    void openHelpAnchor(const std::string& anchor) override;
    void treeWillChange() override;
    void treeChanged() override;
    void nodesChanged() override;
    TWLogsNode* selectedItem() const override;
    void showMessage(const std::string&) override;
    void openFile(const std::string& path) override;
    void showPreview(const std::string& path) override;

    void outlineViewSpaceKeyDown(const QKeyEvent&) override;

    QWidget* createContent();
    void createTree();
    void createActions();
    void createButtons();
    QAction* addTreeAction(const char* name, const QString& text, const QKeySequence&, void (TWLogsSheet::*call)());
    QWidget* createFooter();

    void filter();
    std::string filterText() const;
    void expandAsBefore(const QModelIndex& parent);
    void expandMatches();
    void restoreCurrent();
    void restoreScroll();
    void lookAgain();
    void currentChanged();
    void showState();
    void showActions();
    QString emptyText() const;
    QString checkedText() const;
    bool isLooking() const;
    bool doubleClicked(const QPoint& position);
    bool isOnBox(const QPoint& position) const;
    std::string selectedPath() const;

    void toggle();
    void look();
    void openSelected();
    void showInFileManager();
    void copyPath();
    void keep();

    TWLogsWindowController& controller_;
    TWKeepWindowController& keepList_;
    QLineEdit* filterField_ = nullptr;
    TWLogsModel* model_ = nullptr;
    TWQuickLookOutlineView* tree_ = nullptr;
    QLabel* empty_ = nullptr;
    TWSpinner* spinner_ = nullptr;
    TWQuietLabel* line_ = nullptr;
    TWQuickLookWindow* preview_ = nullptr; // made when it is first wanted
    QAction* toggleAction_ = nullptr;
    QAction* lookAction_ = nullptr;
    QAction* openAction_ = nullptr;
    QAction* showAction_ = nullptr;
    QAction* copyAction_ = nullptr;
    QAction* keepAction_ = nullptr;
    bool isPainted_ = false; // since the sheet was shown
    std::set<std::string> expanded_; // by path, whether they are there or not; without a filter
    bool mustShowMatches_ = false; // as soon as the filter has found them
    bool isWatchProblemShown_ = false;
    std::vector<std::string> nearCurrent_; // paths, while the tree changes: the current row and those around it
    LookedAt lookedAt_; // while the tree changes
    std::string topmost_; // the path, while the tree changes, of a row at the top of the view, and its place
    int heightAbove_ = 0;
};

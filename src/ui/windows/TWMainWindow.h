#pragma once

#include "app/TWCleanerLines.h"
#include "app/TWTidewellAppDelegate.h"
#include "ui/windows/TWCleanerRowView.h"

#include <QMainWindow>

class QAction;
class QMenu;
class QPushButton;

class TWMessageBar;

// The window that every launch shows: one row for each cleaner, and the button that runs them. Closing it quits.
class TWMainWindow final : public QMainWindow, public TWRunView {
    Q_OBJECT

public:
    // The delegate outlives the window.
    explicit TWMainWindow(TWTidewellAppDelegate&);

    // Shows the check boxes, quiet lines and problems as the settings and lists are now.
    void refresh();

    // What the Clean button does.
    void clean();

    void showLight(int position, TWLight) override;
    void startSpinning(int position) override;
    void stopSpinning(int position) override;
    void setCleanEnabled(bool) override;
    void cleaningEnded(TWRunOutcome) override;

signals:
    // Sent once, when the window is on screen with its pictures.
    void appeared();

    // For the editor of that name in TWSheetTable.
    void editRequested(const char* editor);
    void resultsRequested();
    void helpRequested();

    // The window was closed, and the user has answered what there was to ask.
    void quitRequested();

protected:
    void paintEvent(QPaintEvent*) override;
    void changeEvent(QEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    void closeEvent(QCloseEvent*) override;

private:
    enum class Closing { No, Asking, WhenEnded, Now };

    QString resource(const std::string& name) const;
    QString title() const;
    QWidget* createRows();
    QLayout* createButtons();
    QPushButton* createButton(const QString& text, const QString& objectName, const QString& accessibleName);
    void createMenus();
    QAction* addAction(QMenu*, const QString& objectName, const QString& text, const QKeySequence& = {});
    void afterFirstPaint();
    void switchCleaner(TWKey, bool on);
    void showProblems();
    void stop();
    void closeIfEnded();
    bool hasUnsavedEdits() const;
    void askBeforeClosing(const TWAlert&, std::function<void()> confirmed);

    TWTidewellAppDelegate& delegate_;
    TWLightIcons lightIcons_;
    TWMessageBar* messageBar_;
    std::vector<TWCleanerRowView*> rows_; // owned by the window
    QPushButton* cleanButton_ = nullptr;
    QPushButton* stopButton_ = nullptr;
    QAction* cleanAction_ = nullptr;
    QAction* stopAction_ = nullptr;
    TWCleanerLines lines_;
    const std::string lostSettings_; // the first change of a setting ends that problem, but does not bring them back
    std::string unsavedSettings_;
    bool painted_ = false;
    Closing closing_ = Closing::No;
};

#pragma once

#include "app/TWCleanerLines.h"
#include "app/TWTidewellAppDelegate.h"
#include "ui/windows/TWCleanerRowView.h"

#include <QMainWindow>

class QAction;
class QLabel;
class QMenu;
class QPushButton;

class TWMessageBar;

// The main window: one row per cleaner, and the button that runs them. Closing it quits the program.
class TWMainWindow final : public QMainWindow, public TWRunView {
    Q_OBJECT

public:
    // The delegate must outlive the window.
    explicit TWMainWindow(TWTidewellAppDelegate&);

    // Updates the check boxes, lines and problems from the settings and lists.
    void refresh();

    // False while cleaning is going on or there are edits that are not saved.
    bool canQuitSilently() const;

    // The same after lists may have been edited. What Clean would do now takes the place of how the latest run ended.
    void listsEdited();

    // Does the same as the Clean button.
    void clean();

    void showLight(int position, TWLight) override;
    void startSpinning(int position) override;
    void stopSpinning(int position) override;
    void setCleanEnabled(bool) override;
    bool showsProgress() const override { return true; }
    void showProgress(const TWRunProgress&) override;
    void showOutcome(const TWOutcome& outcome) override { brought_ = outcome.text(); }
    void cleaningEnded(TWRunOutcome) override;

signals:
    // Sent once, when the window is on screen with its icons.
    void appeared();

    // The user wants to open the editor with that name in TWSheetTable.
    void editRequested(const char* editor);
    void resultsRequested();
    void previewRequested();
    void helpRequested();

    // How far a run is, from 0 to 1, several times a second; then once that there is nothing more to say about it.
    void progressed(double fraction);
    void progressEnded();

    // The user has closed the window and answered all questions about that.
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
    void createMenus();
    QAction* addAction(QMenu*, const QString& objectName, const QString& text, const QKeySequence& = {});
    void afterFirstPaint();
    TWRunChoice checked() const;
    void say(const QString& sentence);
    void announce(const QString& outcome);
    void showSum();
    void forgetEnd();
    void switchCleaner(TWKey, bool on);
    void showProblems();
    void stop();
    void closeIfEnded();
    void showUnsaved();
    void showInBar(TWMessageBar&, const QString& text);
    void saveNow();
    void showNotSaved(const std::string& problem);
    std::vector<TWEditor*> editorsWithEdits() const;
    std::string titlesOfEdits() const;
    std::string saveEdits();

    // The call is made unless the user presses the alternate button, which keeps the window open.
    void askBeforeClosing(const TWAlert&, std::function<void(TWAnswer)> answered);

    TWTidewellAppDelegate& delegate_;
    TWLightIcons lightIcons_;
    TWMessageBar* messageBar_;
    TWMessageBar* unsavedBar_;
    std::vector<TWCleanerRowView*> rows_; // owned by the window
    QPushButton* cleanButton_ = nullptr;
    QPushButton* stopButton_ = nullptr;
    QLabel* sentence_ = nullptr; // what Clean would do now, how far it is, or how the latest run ended
    QPushButton* resultsButton_ = nullptr; // beside that end
    QAction* cleanAction_ = nullptr;
    QAction* stopAction_ = nullptr;
    TWCleanerLines lines_;
    const std::string lostSettings_; // kept, because the first change of a setting ends the problem but does not bring
                                     // the settings back
    std::string unsavedSettings_;
    bool painted_ = false;
    std::string brought_; // by the latest run
    bool endShown_ = false; // the sentence tells how the latest run ended
    bool stopped_ = false; // the run that is going on, or the latest one
    Closing closing_ = Closing::No;
};

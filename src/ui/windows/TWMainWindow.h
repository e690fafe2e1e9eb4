#pragma once

#include "app/TWApplicationWindows.h"
#include "app/TWCleanerLines.h"
#include "app/TWTidewellAppDelegate.h"
#include "ui/windows/TWCleanerRowView.h"

#include <QMainWindow>

#include <memory>

class QAction;
class QMenu;
class QPushButton;
class TWResultsWindow;

// The one window that every launch shows: the eight cleaners, and the button that runs them. Closing it quits. It makes
// the results window when that is first asked for.
class TWMainWindow final : public QMainWindow, public TWRunView, public TWApplicationWindows {
    Q_OBJECT

public:
    // Becomes the delegate's view. The delegate outlives the window.
    explicit TWMainWindow(TWTidewellAppDelegate&);
    ~TWMainWindow();

    // Shows the check boxes and quiet lines as the settings and lists are now.
    void refresh();

    // As a press of Clean.
    void clean();

    void showLight(int position, TWLight) override;
    void startSpinning(int position) override;
    void stopSpinning(int position) override;
    void setCleanEnabled(bool) override;
    void bringToFront(TWWindow) override;
    bool isKeyWindow(TWWindow) const override;
    void activate() override;
    void requestUserAttention() override;
    void terminate() override;
    void cleaningEnded(TWRunOutcome) override;

signals:
    void editorRequested(const char* name);
    void editDictionaryRequested();
    void helpRequested();

protected:
    void paintEvent(QPaintEvent*) override;
    void changeEvent(QEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    void closeEvent(QCloseEvent*) override;

private:
    enum class Closing { No, Asking, WhenEnded, Now };

    QString resource(const std::string& name) const;
    void makeRows();
    void makeButtons();
    void makeMenus();
    QAction* addAction(QMenu*, const char* name, const QString& text, const QKeySequence&);
    void stop();
    void afterFirstPaint();
    void askBeforeClosing();

    TWTidewellAppDelegate& delegate_;
    TWLightIcons lightIcons_;
    std::vector<TWCleanerRowView*> rows_; // owned by the window
    QPushButton* cleanButton_ = nullptr;
    QPushButton* stopButton_ = nullptr;
    QAction* cleanAction_ = nullptr;
    QAction* stopAction_ = nullptr;
    std::unique_ptr<TWResultsWindow> resultsWindow_;
    TWCleanerLines lines_;
    bool painted_ = false;
    Closing closing_ = Closing::No;
};

#pragma once

#include <QElapsedTimer>
#include <QString>

// Shows the progress of a cleaning on the program's icon in task bars and docks, by the signal Update of
// com.canonical.Unity.LauncherEntry on the session bus. Does nothing without a session bus. The destructor clears the
// progress. Main thread.
class TWQtTaskBar final {
public:
    // The name of the installed desktop entry, without ".desktop".
    explicit TWQtTaskBar(const QString& desktopEntry);
    ~TWQtTaskBar();

    // From 0 to 1. Calls that follow another one in less than 250 ms are dropped.
    void showProgress(double fraction);
    void clearProgress();

private:
    void send(double fraction, bool visible) const;

    const QString address_;
    QElapsedTimer sinceShown_; // not valid while no progress is shown
};

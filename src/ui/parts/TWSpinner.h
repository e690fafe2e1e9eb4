#pragma once

#include <QBasicTimer>
#include <QWidget>

// A spinner that turns while something is going on. Otherwise it is invisible but keeps its place, and no timer runs.
class TWSpinner final : public QWidget {
    Q_OBJECT

public:
    TWSpinner(int size, QWidget* parent);

    void start() { show(); }
    void stop() { hide(); }
    bool turning() const { return timer_.isActive(); }

protected:
    void showEvent(QShowEvent*) override;
    void hideEvent(QHideEvent*) override;
    void timerEvent(QTimerEvent*) override;
    void paintEvent(QPaintEvent*) override;

private:
    QBasicTimer timer_;
    int step_ = 0;
};

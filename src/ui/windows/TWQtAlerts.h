#pragma once

#include "platform/TWAlerts.h"

#include <QPointer>
#include <QWidget>

#include <vector>

// Shows alerts as sheets of the main window or of the sheet that is open on it. Closing an alert without a button
// counts as its alternate button, or as the default button if that is the only one. Alerts that are open when the
// window is destroyed are not answered.
class TWQtAlerts final : public TWAlerts {
public:
    // Call this when the window is on screen. Alerts wait until then, because a sheet would open in a corner of the
    // screen.
    void setWindow(QWidget*);

    void show(const TWAlert&, std::function<void(TWAnswer)> answered) override;

private:
    struct Waiting {
        TWAlert alert;
        std::function<void(TWAnswer)> answered;
    };

    QPointer<QWidget> window_;
    std::vector<Waiting> waiting_;
};

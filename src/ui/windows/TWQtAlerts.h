#pragma once

#include "platform/TWAlerts.h"

#include <QPointer>
#include <QWidget>

#include <vector>

// Questions and announcements as sheets of the main window, or of the sheet that is open on it. Closing one without a
// button answers like its alternate button, or like the default button if that is the only one. Alerts that are still
// open when the window is destroyed are not answered.
class TWQtAlerts final : public TWAlerts {
public:
    // The window is on screen now. Alerts wait until then: a sheet would open in a corner of the screen.
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

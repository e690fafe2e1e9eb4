#pragma once

#include "platform/TWAlerts.h"

#include <QPointer>
#include <QWidget>

// Questions and announcements as sheets of one window. Closing one without a button answers like its alternate button,
// or like the default one when it is alone. What is still open when the window goes is not answered.
class TWQtAlerts final : public TWAlerts {
public:
    // The window whose sheets they are. Without one they stand by themselves.
    void setWindow(QWidget* window) { window_ = window; }

    void show(const TWAlert&, std::function<void(TWAnswer)> answered) override;

private:
    QPointer<QWidget> window_;
};

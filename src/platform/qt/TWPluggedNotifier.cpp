#include "platform/qt/TWPluggedNotifier.h"

#include "support/TWLog.h"
#include "support/TWText.h"

#include <QLibrary>

namespace {

constexpr auto NotLoaded = "TWPluggedNotifier: no notification is shown, because \"%@\" could not be loaded (%@).";

}

void TWPluggedNotifier::post(const TWNotification& notification)
{
    if (!notifier_) {
        QLibrary library(QString::fromStdString(plugIn_));
        const auto make = reinterpret_cast<decltype(&TWMakeNotifier)>(library.resolve("TWMakeNotifier"));
        if (!make) {
            TWLog::write(TWText::fill(NotLoaded, { plugIn_, library.errorString().toStdString() }));
            return;
        }
        notifier_.reset(make());
        notifier_->setClicked(clicked_);
    }
    notifier_->post(notification);
}

void TWPluggedNotifier::setClicked(std::function<void()> clicked)
{
    clicked_ = std::move(clicked);
    if (notifier_)
        notifier_->setClicked(clicked_);
}

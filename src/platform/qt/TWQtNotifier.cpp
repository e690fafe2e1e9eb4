#include "platform/qt/TWQtNotifier.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QVariantMap>

namespace {

constexpr auto Service = "org.freedesktop.Notifications";
constexpr auto Path = "/org/freedesktop/Notifications";
constexpr int Delivery = 1000; // milliseconds

// Urgency levels of the desktop notifications protocol.
constexpr uchar NormalUrgency = 1;
constexpr uchar CriticalUrgency = 2;

}

TWQtNotifier::~TWQtNotifier()
{
    if (latest_)
        latest_->waitForFinished();
}

bool TWQtNotifier::connectOnce()
{
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return false;
    if (!connected_)
        connected_ = bus.connect(Service, Path, Service, "ActionInvoked", this, SLOT(actionInvoked(uint, QString)));
    return true;
}

void TWQtNotifier::post(const TWNotification& notification)
{
    if (!connectOnce())
        return;
    QVariantMap hints{ { "desktop-entry", "org.tidewell.Tidewell" }, { "category", "transfer.complete" } };
    // Replaces the one before, so that the only one on the screen is the one whose clicks are ours.
    const auto previous = latestIdentifier();
    hints["urgency"] = QVariant::fromValue(notification.sticky ? CriticalUrgency : NormalUrgency);
    auto message = QDBusMessage::createMethodCall(Service, Path, Service, "Notify");
    message.setArguments({ "Tidewell", previous, notification.warning ? "dialog-warning" : "",
        QString::fromStdString(notification.title), QString::fromStdString(notification.text).toHtmlEscaped(),
        notification.clickable ? QStringList{ "default", tr("Show results") } : QStringList(), hints,
        notification.sticky ? 0 : -1 });
    latest_ = QDBusConnection::sessionBus().asyncCall(message, Delivery);
}

// Clicks on other programs' notifications come here too; the service numbers them all.
void TWQtNotifier::actionInvoked(uint identifier, const QString& action)
{
    if (action == "default" && clicked_ && identifier != 0 && identifier == latestIdentifier())
        clicked_();
}

// 0, which stands for none, while the service has not answered.
uint TWQtNotifier::latestIdentifier() const
{
    if (!latest_)
        return 0;
    const QDBusPendingReply<uint> reply = *latest_;
    return reply.isFinished() && reply.isValid() ? reply.value() : 0;
}

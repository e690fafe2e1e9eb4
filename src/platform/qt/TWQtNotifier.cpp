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
    // Each notification replaces the previous one, because only clicks on the latest one are reported.
    const auto previous = latestIdentifier();
    hints["urgency"] = QVariant::fromValue(notification.sticky ? CriticalUrgency : NormalUrgency);
    auto message = QDBusMessage::createMethodCall(Service, Path, Service, "Notify");
    message.setArguments({ "Tidewell", previous, notification.warning ? "dialog-warning" : "",
        QString::fromStdString(notification.title), QString::fromStdString(notification.text).toHtmlEscaped(),
        notification.clickable ? QStringList{ "default", tr("Show results") } : QStringList(), hints,
        notification.sticky ? 0 : -1 });
    latest_ = QDBusConnection::sessionBus().asyncCall(message, Delivery);
}

// The signal also reports clicks on other programs' notifications; identifiers are unique among all programs.
void TWQtNotifier::actionInvoked(uint identifier, const QString& action)
{
    if (action == "default" && clicked_ && identifier != 0 && identifier == latestIdentifier())
        clicked_();
}

// 0, which stands for none, until the service has answered.
uint TWQtNotifier::latestIdentifier() const
{
    if (!latest_)
        return 0;
    const QDBusPendingReply<uint> reply = *latest_;
    return reply.isFinished() && reply.isValid() ? reply.value() : 0;
}

// One moc file per class, so that notifier.so gets this class only if it needs it.
#include <moc_TWQtNotifier.cpp> // NOLINT(bugprone-suspicious-include): Qt makes it

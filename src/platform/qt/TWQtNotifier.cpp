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
    QVariantMap hints {{"desktop-entry", "org.tidewell.Tidewell"}, {"category", "transfer.complete"}};
    hints["urgency"] = QVariant::fromValue(notification.sticky ? CriticalUrgency : NormalUrgency);
    auto message = QDBusMessage::createMethodCall(Service, Path, Service, "Notify");
    message.setArguments({"Tidewell", 0U, notification.warning ? "dialog-warning" : "",
        QString::fromStdString(notification.title), QString::fromStdString(notification.text).toHtmlEscaped(),
        QStringList {"default", tr("Show results")}, hints, notification.sticky ? 0 : -1});
    latest_ = QDBusConnection::sessionBus().asyncCall(message, Delivery);
}

// Clicks on other programs' notifications come here too; the service numbers them all.
void TWQtNotifier::actionInvoked(uint identifier, const QString& action)
{
    if (!latest_ || action != "default" || !clicked_)
        return;
    const QDBusPendingReply<uint> reply = *latest_;
    if (reply.isFinished() && reply.isValid() && reply.value() == identifier)
        clicked_();
}

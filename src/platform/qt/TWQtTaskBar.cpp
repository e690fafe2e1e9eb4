#include "platform/qt/TWQtTaskBar.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

namespace {

constexpr auto Path = "/org/tidewell/Tidewell/TaskBar";
constexpr auto Interface = "com.canonical.Unity.LauncherEntry";
constexpr qint64 Interval = 250; // milliseconds

}

TWQtTaskBar::TWQtTaskBar(const QString& desktopEntry)
    : address_("application://" + desktopEntry + ".desktop")
{
}

TWQtTaskBar::~TWQtTaskBar()
{
    clearProgress();
}

void TWQtTaskBar::showProgress(double fraction)
{
    if (sinceShown_.isValid() && !sinceShown_.hasExpired(Interval))
        return;
    sinceShown_.start();
    send(fraction, true);
}

void TWQtTaskBar::clearProgress()
{
    if (!sinceShown_.isValid())
        return;
    sinceShown_.invalidate();
    send(0, false);
}

void TWQtTaskBar::send(double fraction, bool visible) const
{
    auto message = QDBusMessage::createSignal(Path, Interface, "Update");
    const QVariantMap properties{ { "progress", fraction }, { "progress-visible", visible } };
    message.setArguments({ address_, properties });
    QDBusConnection::sessionBus().send(message);
}

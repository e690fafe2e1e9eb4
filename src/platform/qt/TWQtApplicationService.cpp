#include "platform/qt/TWQtApplicationService.h"

#include <QDBusConnection>

namespace {

// Lets a Wayland compositor raise our window on the user's behalf.
void takeActivationToken(const QVariantMap& platformData)
{
    const auto token = platformData.value("activation-token").toString();
    if (!token.isEmpty())
        qputenv("XDG_ACTIVATION_TOKEN", token.toUtf8());
}

}

TWQtApplicationService::TWQtApplicationService(Answers answers)
    : answers_(std::move(answers))
{
}

void TWQtApplicationService::offer(const QString& name)
{
    auto bus = QDBusConnection::sessionBus();
    // The desktop expects the object at the name with slashes. It is exported first, because calls may arrive as soon
    // as the name is taken.
    const QString path = "/" + QString(name).replace('.', '/');
    if (bus.isConnected() && bus.registerObject(path, this, QDBusConnection::ExportAllSlots))
        bus.registerService(name);
}

void TWQtApplicationService::Activate(const QVariantMap& platformData) const
{
    takeActivationToken(platformData);
    answers_.activate();
}

void TWQtApplicationService::ActivateAction(
    const QString& action, const QVariantList&, const QVariantMap& platformData) const
{
    takeActivationToken(platformData);
    if (action == "clean")
        answers_.clean();
}

// One moc file per class, so that notifier.so gets this class only if it needs it.
#include <moc_TWQtApplicationService.cpp> // NOLINT(bugprone-suspicious-include): Qt makes it

#pragma once

#include "platform/TWNotifier.h"

#include <QDBusPendingCall>
#include <QObject>

#include <optional>

// Posts to org.freedesktop.Notifications on the session bus. The destructor waits up to a second until the last
// notification is delivered.
class TWQtNotifier final : public QObject, public TWNotifier {
    Q_OBJECT

public:
    TWQtNotifier() = default;
    ~TWQtNotifier();

    void post(const TWNotification&) override;
    void setClicked(std::function<void()> clicked) override { clicked_ = std::move(clicked); }

private slots:
    void actionInvoked(uint identifier, const QString& action);

private:
    bool connectOnce();
    uint latestIdentifier() const;

    std::function<void()> clicked_;
    bool connected_ = false;
    std::optional<QDBusPendingCall> latest_;
};

#pragma once

#include <QObject>
#include <QVariantMap>

#include <functional>

// What the desktop calls when the user starts a program that runs already, or chooses one of its actions: the interface
// org.freedesktop.Application under our well-known name on the session bus.
class TWQtApplicationService final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    struct Answers {
        std::function<void()> activate;
        std::function<void()> clean; // the action "clean" of the desktop entry
    };

    explicit TWQtApplicationService(Answers);

    // Takes the name. Without a session bus, or when another one has the name, nothing happens.
    void offer(const QString& name);

public slots:
    void Activate(const QVariantMap& platformData);
    void ActivateAction(const QString& action, const QVariantList& parameters, const QVariantMap& platformData);

private:
    Answers answers_;
};

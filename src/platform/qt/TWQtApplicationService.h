#pragma once

#include <QObject>
#include <QVariantMap>

#include <functional>

// The D-Bus interface org.freedesktop.Application, which the desktop calls when the user starts a program that is
// already running or chooses one of its actions.
class TWQtApplicationService final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    struct Answers {
        std::function<void()> activate;
        std::function<void()> clean; // the action "clean" of the desktop entry
    };

    explicit TWQtApplicationService(Answers);

    // Registers on the session bus under the well-known name. Does nothing if there is no session bus or another
    // process has the name.
    void offer(const QString& name);

public slots:
    void Activate(const QVariantMap& platformData) const;
    void ActivateAction(const QString& action, const QVariantList& parameters, const QVariantMap& platformData) const;

private:
    Answers answers_;
};

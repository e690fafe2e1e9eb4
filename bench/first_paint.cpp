// Loaded into a Qt program with LD_PRELOAD: exits with status 0 as soon as one of its windows has been painted.

#include <QApplication>
#include <QEvent>
#include <QWidget>

#include <climits>
#include <cstdlib>

namespace {

class FirstPaint final : public QObject {
    bool eventFilter(QObject* object, QEvent* event) override
    {
        const auto* widget = qobject_cast<QWidget*>(object);
        // The contents of the window are painted before the next event is handled.
        if (event->type() == QEvent::Paint && widget && widget->isWindow())
            QCoreApplication::postEvent(this, new QEvent(QEvent::User), INT_MAX);
        return false;
    }

    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::User)
            std::_Exit(0);
        return QObject::event(event);
    }
};

void watch()
{
    static FirstPaint firstPaint;
    qApp->installEventFilter(&firstPaint);
}

}

Q_COREAPP_STARTUP_FUNCTION(watch)

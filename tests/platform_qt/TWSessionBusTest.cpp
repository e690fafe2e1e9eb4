// What Tidewell says on the session bus, on a private one.

#include "platform/qt/TWQtFileManager.h"
#include "platform/qt/TWQtTaskBar.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QProcess>
#include <QTest>

namespace {

// The other side of the bus: a file manager, if it is offered, and somebody who watches task bars.
class Desktop final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList calls;
    QList<QVariantMap> updates;

public slots:
    void ShowItems(const QStringList& addresses, const QString&) { calls += "items " + addresses.join(' '); }
    void ShowFolders(const QStringList& addresses, const QString&) { calls += "folders " + addresses.join(' '); }
    void updated(const QString& address, const QVariantMap& properties)
    {
        EXPECT_EQ(address, "application://org.example.App.desktop");
        updates += properties;
    }
};

class Daemon final : public QProcess {
public:
    ~Daemon()
    {
        kill();
        waitForFinished();
    }
};

// The program's connection to the session bus lasts until it ends, so the bus must last as long.
QString sessionBus()
{
    static Daemon daemon;
    static const QString address = [] {
        daemon.start("dbus-daemon", { "--session", "--nofork", "--print-address=1" });
        EXPECT_TRUE(daemon.waitForReadyRead()) << daemon.errorString().toStdString();
        const auto line = daemon.readLine().trimmed();
        qputenv("DBUS_SESSION_BUS_ADDRESS", line);
        return QString::fromUtf8(line);
    }();
    return address;
}

class TWSessionBusTest : public testing::Test {
protected:
    Desktop desktop;
    QDBusConnection bus = QDBusConnection::connectToBus(sessionBus(), "desktop");
};

TEST_F(TWSessionBusTest, TheFileManagerGetsExactAddressesAndAFolderIsOpenedWithoutOne)
{
    QList<QUrl> opened;
    QList<bool> answers;
    bool opens = true;
    const auto done = [&](bool shown) { answers += shown; };
    TWQtFileManager fileManager([&](const QUrl& url) {
        opened += url;
        return opens;
    });
    for (; answers.size() < 2; opens = false) {
        fileManager.showItem("/a \xFF#%/b?", done);
        ASSERT_TRUE(QTest::qWaitFor([&, before = answers.size()] { return answers.size() > before; }));
    }
    EXPECT_EQ(answers, (QList<bool>{ true, false }));
    EXPECT_EQ(opened[0].toEncoded(), "file:///a%20%FF%23%25");
    ASSERT_TRUE(bus.registerObject("/org/freedesktop/FileManager1", &desktop, QDBusConnection::ExportAllSlots)
        && bus.registerService("org.freedesktop.FileManager1"));
    fileManager.showItem("/a \xFF#%/b?", done);
    fileManager.showFolder("/a", done);
    EXPECT_TRUE(QTest::qWaitFor([&] { return answers.size() == 4; }));
    EXPECT_EQ(desktop.calls, (QStringList{ "items file:///a%20%FF%23%25/b%3F", "folders file:///a" }));
    EXPECT_TRUE(answers[3] && opened.size() == 2);
}

TEST_F(TWSessionBusTest, TheTaskBarGetsFewSignalsAndALastOne)
{
    ASSERT_TRUE(bus.connect(
        {}, {}, "com.canonical.Unity.LauncherEntry", "Update", &desktop, SLOT(updated(QString, QVariantMap))));
    {
        TWQtTaskBar taskBar("org.example.App");
        for (int step = 0; step < 100; ++step)
            taskBar.showProgress(0.25);
        taskBar.clearProgress();
        taskBar.showProgress(0.5);
    }
    EXPECT_TRUE(QTest::qWaitFor([&] { return desktop.updates.size() >= 4; }));
    const QVariantMap cleared{ { "progress", 0.0 }, { "progress-visible", false } };
    EXPECT_EQ(desktop.updates,
        (QList<QVariantMap>{ { { "progress", 0.25 }, { "progress-visible", true } }, cleared,
            { { "progress", 0.5 }, { "progress-visible", true } }, cleared }));
}

}

#include "TWSessionBusTest.moc"

#include "platform/qt/TWQtFileManager.h"

#include "support/TWPath.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>

namespace {

constexpr auto Service = "org.freedesktop.FileManager1";
constexpr auto Path = "/org/freedesktop/FileManager1";
constexpr int Patience = 10'000; // milliseconds; the call starts the file manager if it is not running

// Names that are not UTF-8 stay exact, because every byte is encoded by itself.
QByteArray address(const std::string& path)
{
    return "file://" + QByteArray::fromStdString(path).toPercentEncoding("/");
}

}

TWQtFileManager::TWQtFileManager(OpenDocument openDocument)
    : openDocument_(std::move(openDocument))
{
}

void TWQtFileManager::showItem(const std::string& path, Done done)
{
    call("ShowItems", path, std::string(TWPath::parent(path)), std::move(done));
}

void TWQtFileManager::showFolder(const std::string& path, Done done)
{
    call("ShowFolders", path, path, std::move(done));
}

void TWQtFileManager::open(const std::string& path, Done done)
{
    QMetaObject::invokeMethod(
        this, [this, path, done = std::move(done)] { done(openDocument_(QUrl::fromEncoded(address(path)))); },
        Qt::QueuedConnection);
}

// Without a session bus the call fails like one that nobody answers.
void TWQtFileManager::call(const char* method, const std::string& path, const std::string& folder, Done done)
{
    auto message = QDBusMessage::createMethodCall(Service, Path, Service, method);
    message.setArguments({ QStringList(QString::fromLatin1(address(path))), QString() });
    const auto reply = QDBusConnection::sessionBus().asyncCall(message, Patience);
    auto* watcher = new QDBusPendingCallWatcher(reply, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, folder, done = std::move(done), watcher] {
        watcher->deleteLater();
        done(!watcher->isError() || openDocument_(QUrl::fromEncoded(address(folder))));
    });
}

// One moc file per class, so that notifier.so gets this class only if it needs it.
#include <moc_TWQtFileManager.cpp> // NOLINT(bugprone-suspicious-include): Qt makes it

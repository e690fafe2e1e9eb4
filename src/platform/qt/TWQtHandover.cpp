#include "platform/qt/TWQtHandover.h"

#include <QByteArrayList>
#include <QDataStream>
#include <QIODevice>
#include <QLocalSocket>

#include <sys/un.h>

namespace {

constexpr auto NoAnswer
    = "The Tidewell window ended before it had answered. Please look whether the command was carried out.\n";

// Milliseconds, per piece of a message. The window does not stand still for a command that does; a command waits as
// long as the window lives, since whoever tried again might have his command carried out twice.
constexpr int WindowsPatience = 2000;
constexpr int CommandsPatience = -1;
constexpr int Connecting = 500;

QByteArray packed(const QByteArrayList& parts)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << parts;
    return bytes;
}

// Reads until the parts are there, the other side hangs up, or it takes too long.
std::optional<QByteArrayList> receive(QLocalSocket& socket, int patience)
{
    QDataStream stream(&socket);
    QByteArrayList parts;
    do {
        stream.startTransaction();
        stream >> parts;
        if (stream.commitTransaction())
            return parts;
    } while (stream.status() != QDataStream::ReadCorruptData && socket.waitForReadyRead(patience));
    return std::nullopt;
}

void send(QLocalSocket& socket, const QByteArrayList& parts, int patience)
{
    socket.write(packed(parts));
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(patience)) { }
}

// A longer path would be made, but nobody could connect to it.
bool fitsSocket(const std::string& path)
{
    return path.size() < sizeof(sockaddr_un::sun_path);
}

bool connectTo(QLocalSocket& socket, const std::vector<std::string>& paths)
{
    for (const auto& path : paths) {
        if (!fitsSocket(path))
            continue;
        socket.connectToServer(QString::fromStdString(path));
        if (socket.waitForConnected(Connecting))
            return true;
        socket.abort();
    }
    return false;
}

}

TWQtHandover::TWQtHandover(std::vector<std::string> socketPaths)
    : socketPaths_(std::move(socketPaths))
{
}

bool TWQtHandover::listen(CarryOut carryOut)
{
    carryOut_ = std::move(carryOut);
    QLocalSocket probe;
    if (connectTo(probe, socketPaths_))
        return false;
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] { serve(); });
    for (const auto& path : socketPaths_) {
        const auto name = QString::fromStdString(path);
        if (!fitsSocket(path))
            continue;
        QLocalServer::removeServer(name); // left behind by a window that was killed
        if (server_.listen(name))
            return true;
    }
    return false;
}

void TWQtHandover::serve()
{
    const std::unique_ptr<QLocalSocket> socket(server_.nextPendingConnection());
    const auto parts = socket ? receive(*socket, WindowsPatience) : std::nullopt;
    if (!parts || parts->isEmpty())
        return;
    std::vector<std::string> words;
    for (const auto& part : parts->mid(1))
        words.push_back(part.toStdString());
    const auto result = carryOut_(words, parts->first().toStdString());
    send(*socket,
        { QByteArray::number(result.status), QByteArray::fromStdString(result.out),
            QByteArray::fromStdString(result.err) },
        WindowsPatience);
    socket->disconnectFromServer();
}

std::optional<TWCommandResult> TWQtHandover::handOver(
    const std::vector<std::string>& words, const std::string& workingFolder) const
{
    QLocalSocket socket;
    if (!connectTo(socket, socketPaths_))
        return std::nullopt;
    QByteArrayList parts{ QByteArray::fromStdString(workingFolder) };
    for (const auto& word : words)
        parts.append(QByteArray::fromStdString(word));
    send(socket, parts, CommandsPatience);
    const auto answer = receive(socket, CommandsPatience);
    if (!answer || answer->size() != 3)
        return TWCommandResult{ 1, "", NoAnswer };
    return TWCommandResult{ answer->at(0).toInt(), answer->at(1).toStdString(), answer->at(2).toStdString() };
}

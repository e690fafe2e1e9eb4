#include "platform/qt/TWQtHandover.h"

#include <QByteArrayList>
#include <QDataStream>
#include <QIODevice>
#include <QLocalSocket>

namespace {

constexpr int Patience = 2000; // milliseconds, for the whole of one message
constexpr int Connecting = 500;

QByteArray packed(const QByteArrayList& parts)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << parts;
    return bytes;
}

// Reads until the parts are there, the other side hangs up, or it takes too long.
std::optional<QByteArrayList> receive(QLocalSocket& socket)
{
    QDataStream stream(&socket);
    QByteArrayList parts;
    do {
        stream.startTransaction();
        stream >> parts;
        if (stream.commitTransaction())
            return parts;
    } while (stream.status() != QDataStream::ReadCorruptData && socket.waitForReadyRead(Patience));
    return std::nullopt;
}

void send(QLocalSocket& socket, const QByteArrayList& parts)
{
    socket.write(packed(parts));
    socket.waitForBytesWritten(Patience);
}

}

TWQtHandover::TWQtHandover(std::string socketPath)
    : socketPath_(std::move(socketPath))
{
}

bool TWQtHandover::listen(CarryOut carryOut)
{
    carryOut_ = std::move(carryOut);
    const auto name = QString::fromStdString(socketPath_);
    QLocalSocket probe;
    probe.connectToServer(name);
    if (probe.waitForConnected(Connecting))
        return false;
    QLocalServer::removeServer(name); // left behind by a window that was killed
    server_.setSocketOptions(QLocalServer::UserAccessOption);
    QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] { serve(); });
    server_.listen(name);
    return true;
}

void TWQtHandover::serve()
{
    const std::unique_ptr<QLocalSocket> socket(server_.nextPendingConnection());
    const auto parts = socket ? receive(*socket) : std::nullopt;
    if (!parts || parts->isEmpty())
        return;
    std::vector<std::string> words;
    for (const auto& part : parts->mid(1))
        words.push_back(part.toStdString());
    const auto result = carryOut_(words, parts->first().toStdString());
    send(*socket, {QByteArray::number(result.status), QByteArray::fromStdString(result.out), QByteArray::fromStdString(result.err)});
    socket->disconnectFromServer();
}

std::optional<TWCommandResult> TWQtHandover::handOver(
    const std::vector<std::string>& words, const std::string& workingFolder) const
{
    QLocalSocket socket;
    socket.connectToServer(QString::fromStdString(socketPath_));
    if (!socket.waitForConnected(Connecting))
        return std::nullopt;
    QByteArrayList parts {QByteArray::fromStdString(workingFolder)};
    for (const auto& word : words)
        parts.append(QByteArray::fromStdString(word));
    send(socket, parts);
    const auto answer = receive(socket);
    if (!answer || answer->size() != 3)
        return TWCommandResult {1, "", "The running Tidewell window did not answer. Please try again.\n"};
    return TWCommandResult {answer->at(0).toInt(), answer->at(1).toStdString(), answer->at(2).toStdString()};
}

#include "ui/parts/TWQtText.h"

#include "support/TWText.h"

#include <QFile>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QStringDecoder>

namespace TWQtText {

constexpr QChar LeftToRightIsolate(0x2066);
constexpr QChar PopIsolate(0x2069);
constexpr int TitleCharacters = 60;

// Paths and our English sentences are written from left to right in every language; otherwise a path's first slash
// would move to its end.
QString shown(std::string_view bytes)
{
    const auto text = exact(TWText::oneLine(bytes));
    return QGuiApplication::isLeftToRight() || text.isEmpty() ? text : LeftToRightIsolate + text + PopIsolate;
}

QString shownLines(std::string_view bytes)
{
    return shown(bytes).replace(QChar(0x240A), '\n'); // the picture of a newline
}

QString toolTip(std::string_view bytes)
{
    return bytes.empty() ? QString() : QString("<p>%1</p>").arg(shown(bytes).toHtmlEscaped());
}

QString titlePart(std::string_view bytes)
{
    const QFontMetrics metrics(QGuiApplication::font());
    return metrics.elidedText(shown(bytes), Qt::ElideMiddle, TitleCharacters * metrics.averageCharWidth());
}

// Not QString::fromUtf8(), which drops a byte order mark at the beginning.
QString exact(std::string_view text)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    return decoder(QByteArrayView(text.data(), static_cast<qsizetype>(text.size())));
}

std::string bytes(const QString& text)
{
    return text.toStdString();
}

QString path(const std::string& path)
{
    return QFile::decodeName(path.c_str());
}

std::optional<std::string> pathBytes(const QString& path)
{
    const auto encoded = QFile::encodeName(path);
    if (path.contains(QChar::ReplacementCharacter) || QFile::decodeName(encoded) != path)
        return std::nullopt;
    return encoded.toStdString();
}

}

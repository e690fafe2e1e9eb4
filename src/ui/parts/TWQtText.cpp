#include "ui/parts/TWQtText.h"

#include "support/TWText.h"

#include <QFile>
#include <QStringDecoder>

namespace TWQtText {

QString shown(std::string_view bytes)
{
    return exact(TWText::oneLine(bytes));
}

QString shownLines(std::string_view bytes)
{
    return shown(bytes).replace(QChar(0x240A), '\n'); // the picture of a newline
}

QString toolTip(std::string_view bytes)
{
    return bytes.empty() ? QString() : QString("<p>%1</p>").arg(shown(bytes).toHtmlEscaped());
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

#include "ui/parts/TWQtText.h"

#include "support/TWText.h"

namespace TWQtText {

QString shown(std::string_view bytes)
{
    return exact(TWText::oneLine(bytes));
}

QString exact(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

std::string bytes(const QString& text)
{
    return text.toStdString();
}

}

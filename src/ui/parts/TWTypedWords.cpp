#include "ui/parts/TWTypedWords.h"

#include <QRegularExpression>

namespace {

const QRegularExpression& separator()
{
    static const QRegularExpression expression(",|\\r\\n|\\n|\\r|\\x{2028}|\\x{2029}");
    return expression;
}

}

bool TWTypedWords::hasSeparator(const QString& text)
{
    return text.contains(separator());
}

TWTypedWords::TWTypedWords(const QString& text, bool followsComma)
{
    qsizetype begin = 0;
    const auto take = [&](qsizetype end) {
        if (followsComma && begin < end && text[begin] == ' ')
            ++begin;
        words.append(text.mid(begin, end - begin));
    };
    for (auto matches = separator().globalMatch(text); matches.hasNext();) {
        const auto match = matches.next();
        take(match.capturedStart());
        followsComma = match.capturedView() == u",";
        begin = match.capturedEnd();
    }
    endsWithComma = followsComma && begin == text.size();
    if (begin < text.size())
        take(text.size());
}

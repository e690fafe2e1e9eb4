#pragma once

#include <QStringList>

// A typed or pasted text, split into words at commas and line ends. Words keep their blanks and may be empty, except
// that one blank right after a comma belongs to the comma, and that no empty word follows a separator at the end.
struct TWTypedWords {
    static bool hasSeparator(const QString&);

    // followsComma: the text follows a comma that was split off before.
    TWTypedWords(const QString& text, bool followsComma);

    QStringList words;
    bool endsWithComma = false;
};

#pragma once

#include <QStringList>

// A text as typed or pasted into the dictionary, cut into words at commas and line ends. Words keep their blanks, and
// there may be empty ones; but one blank right after a comma belongs to the comma, and what ends with a separator has
// no further word behind it.
struct TWTypedWords {
    static bool hasSeparator(const QString&);

    // followsComma: the text stands behind a comma that was cut off before.
    TWTypedWords(const QString& text, bool followsComma);

    QStringList words;
    bool endsWithComma = false;
};

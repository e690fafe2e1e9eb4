#pragma once

#include <QStringList>

// A typed or pasted text, split into words at commas and line ends. Words keep their spaces and may be empty, except
// that one space right after a comma belongs to the comma and a separator at the end is not followed by an empty word.
struct TWTypedWords {
    static bool hasSeparator(const QString&);

    // followsComma: the text comes right after a comma that was split off before.
    TWTypedWords(const QString& text, bool followsComma);

    QStringList words;
    bool endsWithComma = false;
};

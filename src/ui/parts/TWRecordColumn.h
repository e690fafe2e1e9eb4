#pragma once

#include <QIcon>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <string>

// What a table shows beside a record.
struct TWRecordNote {
    QString text; // "" while it is not known yet
    bool warning = false;
};

// One column of a table of records: its title and the functions that read and change its cell in a row. They work
// directly on the list being edited; a table keeps no copy.
struct TWRecordColumn {
    enum class Kind { Check, Text, Path, Choice, Note };

    template <typename Value>
    using Get = std::function<Value(int row)>;
    template <typename Value>
    using Set = std::function<void(int row, Value)>;

    // The name determines the object name of the cell's editor: "path" is edited in "pathEditor". A path is elided in
    // the middle. Without a Set the text cannot be edited.
    static TWRecordColumn check(QString name, QString title, Get<bool>, Set<bool>);
    static TWRecordColumn text(QString name, QString title, Get<std::string>, Set<std::string> = nullptr);
    static TWRecordColumn path(QString name, QString title, Get<std::string>, Set<std::string> = nullptr);

    // A pop-up menu of the numbers from 0 to count - 1. A record may hold any other number, which stays unless the user
    // chooses another one. label names any number.
    static TWRecordColumn choice(QString name, QString title, int count, std::function<QString(std::int64_t)> label,
        Get<std::int64_t>, Set<std::int64_t>);

    // Sets whether the cell in a row matters there. One that does not is greyed, but can be edited.
    TWRecordColumn usedIf(Get<bool>) &&;

    // Sets the icon before a text, and what the tooltip shows in the place of the text itself.
    TWRecordColumn withIcon(Get<QIcon>) &&;
    TWRecordColumn withToolTip(Get<std::string>) &&;

    // Cannot be edited.
    static TWRecordColumn note(QString name, QString title, Get<TWRecordNote>);

    Kind kind = Kind::Text;
    QString name;
    QString title;

    // Only the functions of the column's kind are set.
    Get<bool> checked;
    Set<bool> setChecked;
    Get<std::string> textAt;
    Set<std::string> setText;
    int choiceCount = 0;
    std::function<QString(std::int64_t)> choiceLabel;
    Get<std::int64_t> chosen;
    Set<std::int64_t> setChosen;
    Get<TWRecordNote> noteAt;

    // Only set for some columns. Without used, every cell is used.
    Get<bool> used;
    Get<QIcon> icon;
    Get<std::string> toolTip;

    bool isEditable() const { return kind == Kind::Choice || setText; }

private:
    TWRecordColumn(Kind givenKind, QString givenName, QString givenTitle)
        : kind(givenKind)
        , name(std::move(givenName))
        , title(std::move(givenTitle))
    {
    }
};

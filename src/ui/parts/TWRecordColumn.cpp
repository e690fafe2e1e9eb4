#include "ui/parts/TWRecordColumn.h"

TWRecordColumn TWRecordColumn::check(QString name, QString title, Get<bool> get, Set<bool> set)
{
    TWRecordColumn column(Kind::Check, std::move(name), std::move(title));
    column.checked = std::move(get);
    column.setChecked = std::move(set);
    return column;
}

TWRecordColumn TWRecordColumn::text(QString name, QString title, Get<std::string> get, Set<std::string> set)
{
    TWRecordColumn column(Kind::Text, std::move(name), std::move(title));
    column.textAt = std::move(get);
    column.setText = std::move(set);
    return column;
}

TWRecordColumn TWRecordColumn::path(QString name, QString title, Get<std::string> get, Set<std::string> set)
{
    auto column = text(std::move(name), std::move(title), std::move(get), std::move(set));
    column.kind = Kind::Path;
    return column;
}

TWRecordColumn TWRecordColumn::choice(QString name, QString title, int count,
    std::function<QString(std::int64_t)> label, Get<std::int64_t> get, Set<std::int64_t> set)
{
    TWRecordColumn column(Kind::Choice, std::move(name), std::move(title));
    column.choiceCount = count;
    column.choiceLabel = std::move(label);
    column.chosen = std::move(get);
    column.setChosen = std::move(set);
    return column;
}

TWRecordColumn TWRecordColumn::usedIf(Get<bool> get) &&
{
    used = std::move(get);
    return std::move(*this);
}

TWRecordColumn TWRecordColumn::withIcon(Get<QIcon> get) &&
{
    icon = std::move(get);
    return std::move(*this);
}

TWRecordColumn TWRecordColumn::withToolTip(Get<std::string> get) &&
{
    toolTip = std::move(get);
    return std::move(*this);
}

TWRecordColumn TWRecordColumn::note(QString name, QString title, Get<TWRecordNote> get)
{
    TWRecordColumn column(Kind::Note, std::move(name), std::move(title));
    column.noteAt = std::move(get);
    return column;
}

#include "ui/parts/TWRecordModel.h"

#include "ui/parts/ImageAndTextCell.h"
#include "ui/parts/TWQtText.h"

#include <algorithm>

using Kind = TWRecordColumn::Kind;

TWRecordModel::TWRecordModel(std::vector<TWRecordColumn> columns, std::function<int()> recordCount, QObject* parent)
    : QAbstractTableModel(parent)
    , columns_(std::move(columns))
    , recordCount_(std::move(recordCount))
{
}

int TWRecordModel::columnOf(Kind kind) const
{
    const auto found
        = std::find_if(columns_.begin(), columns_.end(), [&](const auto& each) { return each.kind == kind; });
    return found == columns_.end() ? -1 : static_cast<int>(found - columns_.begin());
}

void TWRecordModel::reload()
{
    beginResetModel();
    endResetModel();
}

void TWRecordModel::notesChanged()
{
    if (rowCount() > 0) // icons and colours may depend on what the notes depend on
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}

int TWRecordModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : recordCount_();
}

int TWRecordModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant TWRecordModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignLeading | Qt::AlignVCenter);
    return role == Qt::DisplayRole ? column(section).title : QVariant();
}

QVariant TWRecordModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const int row = index.row();
    const auto& column = this->column(index.column());
    if (column.kind == Kind::Check && role == Qt::CheckStateRole)
        return column.checked(row) ? Qt::Checked : Qt::Unchecked;
    if (role == Qt::AccessibleTextRole)
        return accessibleText(row, column);
    if (role == ImageAndTextCell::GreyedRole)
        return column.used && !column.used(row);
    if (column.kind == Kind::Check)
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return TWQtText::shown(plainText(row, column));
    case Qt::DecorationRole:
        return column.icon ? column.icon(row) : QVariant();
    case Qt::ToolTipRole:
        return TWQtText::toolTip(column.toolTip ? column.toolTip(row) : plainText(row, column));
    case Qt::EditRole:
        return editedValue(row, column);
    case WarningRole:
        return column.kind == Kind::Note && column.noteAt(row).warning;
    default:
        return {};
    }
}

std::string TWRecordModel::plainText(int row, const TWRecordColumn& column) const
{
    if (column.kind == Kind::Choice)
        return TWQtText::bytes(column.choiceLabel(column.chosen(row)));
    if (column.kind == Kind::Note)
        return TWQtText::bytes(column.noteAt(row).text);
    return column.textAt(row);
}

QVariant TWRecordModel::editedValue(int row, const TWRecordColumn& column) const
{
    if (column.kind == Kind::Choice)
        return static_cast<qlonglong>(column.chosen(row));
    return column.kind == Kind::Note ? QVariant() : TWQtText::exact(column.textAt(row));
}

// The first check box gets the name of its record, the first text column.
QString TWRecordModel::accessibleText(int row, const TWRecordColumn& column) const
{
    if (column.kind == Kind::Check) {
        if (&column != &columns_[static_cast<std::size_t>(columnOf(Kind::Check))])
            return (column.checked(row) ? tr("%1: on") : tr("%1: off")).arg(column.title);
        const int name = columnOf(Kind::Text);
        const auto record = name == -1 ? column.title : TWQtText::shown(plainText(row, this->column(name)));
        return (column.checked(row) ? tr("%1 is on") : tr("%1 is off")).arg(record);
    }
    const auto text = TWQtText::shown(plainText(row, column));
    // What cannot be edited is grey for a reason that the note tells.
    if (column.isEditable() && column.used && !column.used(row) && !text.isEmpty())
        return tr("%1, not used").arg(text);
    return column.kind == Kind::Note && column.noteAt(row).warning ? tr("Warning: %1").arg(text) : text;
}

bool TWRecordModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.row() >= rowCount()
        || !(flags(index) & (Qt::ItemIsEditable | Qt::ItemIsUserCheckable)))
        return false;
    const auto& column = this->column(index.column());
    if (role != (column.kind == Kind::Check ? Qt::CheckStateRole : Qt::EditRole))
        return false;
    // An editor that was opened and left unchanged must not write, because a text that is not valid UTF-8 would be
    // damaged.
    if (value == data(index, role))
        return false;
    change(index.row(), column, value);
    emit dataChanged(this->index(index.row(), 0), this->index(index.row(), columnCount() - 1));
    return true;
}

void TWRecordModel::change(int row, const TWRecordColumn& column, const QVariant& value)
{
    if (column.kind == Kind::Check)
        column.setChecked(row, value.toInt() == Qt::Checked);
    else if (column.kind == Kind::Choice)
        column.setChosen(row, value.toLongLong());
    else
        column.setText(row, TWQtText::bytes(value.toString()));
}

Qt::ItemFlags TWRecordModel::flags(const QModelIndex& index) const
{
    auto flags = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    if (!index.isValid())
        return flags;
    const auto& column = this->column(index.column());
    flags.setFlag(Qt::ItemIsUserCheckable, column.kind == Kind::Check);
    flags.setFlag(Qt::ItemIsEditable, column.isEditable());
    return flags;
}

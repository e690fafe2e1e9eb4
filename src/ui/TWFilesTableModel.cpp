#include "ui/TWFilesTableModel.h"

#include "ui/TWQtText.h"

TWFilesTableModel::TWFilesTableModel(TWFilesWindowController& controller, QObject* parent)
    : QAbstractTableModel(parent)
    , controller_(controller)
{
}

void TWFilesTableModel::reload()
{
    beginResetModel();
    endResetModel();
}

QString TWFilesTableModel::kindLabel(qlonglong kind)
{
    switch (kind) {
    case TWItemItself:
        return tr("The item itself");
    case TWFolderContents:
        return tr("The folder's contents");
    case TWItemsWithKeywords:
        return tr("Items named with keywords");
    case TWItemsWithKeywordsDeep:
        return tr("Items named with keywords, in subfolders too");
    default:
        return tr("Nothing (kind %1)").arg(kind);
    }
}

int TWFilesTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(controller_.rules().size());
}

int TWFilesTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant TWFilesTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return int(Qt::AlignLeft | Qt::AlignVCenter);
    if (role != Qt::DisplayRole)
        return {};
    const QString titles[] = { tr("Active"), tr("Name"), tr("Path"), tr("What to delete"), tr("Matches now") };
    return titles[section];
}

QVariant TWFilesTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return shownText(index.row(), index.column());
    case Qt::ToolTipRole:
        return index.column() == Active ? QVariant() : shownText(index.row(), index.column());
    case Qt::EditRole:
        return editedValue(index.row(), index.column());
    case Qt::CheckStateRole:
        if (index.column() == Active)
            return controller_.rules()[static_cast<std::size_t>(index.row())].active ? Qt::Checked : Qt::Unchecked;
        return {};
    case WarningRole:
        return index.column() == Note && controller_.note(index.row()).warning;
    case Qt::AccessibleTextRole:
        return accessibleText(index.row(), index.column());
    default:
        return {};
    }
}

QVariant TWFilesTableModel::shownText(int row, int column) const
{
    const auto& rule = controller_.rules()[static_cast<std::size_t>(row)];
    switch (column) {
    case Name:
        return TWQtText::shown(rule.description);
    case Path:
        return TWQtText::shown(rule.filePath);
    case WhatToDelete:
        return kindLabel(rule.whatToDelete);
    case Note:
        return TWQtText::shown(controller_.note(row).text);
    default:
        return {};
    }
}

QVariant TWFilesTableModel::editedValue(int row, int column) const
{
    const auto& rule = controller_.rules()[static_cast<std::size_t>(row)];
    switch (column) {
    case Name:
        return TWQtText::exact(rule.description);
    case Path:
        return TWQtText::exact(rule.filePath);
    case WhatToDelete:
        return qlonglong(rule.whatToDelete);
    default:
        return {};
    }
}

QString TWFilesTableModel::accessibleText(int row, int column) const
{
    const auto& rule = controller_.rules()[static_cast<std::size_t>(row)];
    if (column == Active)
        return (rule.active ? tr("%1 is on") : tr("%1 is off")).arg(TWQtText::shown(rule.description));
    const auto text = shownText(row, column).toString();
    return column == Note && controller_.note(row).warning ? tr("Warning: %1").arg(text) : text;
}

bool TWFilesTableModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    if (!index.isValid() || index.row() >= rowCount())
        return false;
    const int row = index.row();
    // An editor that was closed unchanged must not write, because a path that is not valid UTF-8 would be damaged.
    if (role == Qt::EditRole && value == editedValue(row, index.column()))
        return false;
    if (role == Qt::CheckStateRole && index.column() == Active)
        controller_.setActive(row, value.toInt() == Qt::Checked);
    else if (role == Qt::EditRole && index.column() == Name)
        controller_.setDescription(row, TWQtText::bytes(value.toString()));
    else if (role == Qt::EditRole && index.column() == Path)
        controller_.setFilePath(row, TWQtText::bytes(value.toString()));
    else if (role == Qt::EditRole && index.column() == WhatToDelete)
        controller_.setWhatToDelete(row, value.toLongLong());
    else
        return false;
    emit dataChanged(this->index(row, Active), this->index(row, Note));
    return true;
}

Qt::ItemFlags TWFilesTableModel::flags(const QModelIndex& index) const
{
    auto flags = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    if (index.column() == Active)
        flags |= Qt::ItemIsUserCheckable;
    else if (index.column() != Note)
        flags |= Qt::ItemIsEditable;
    return flags;
}

#include "ui/windows/TWPreviewModel.h"

#include "support/TWText.h"
#include "ui/parts/TWQtText.h"

#include <QApplication>
#include <QDateTime>
#include <QLocale>
#include <QStyle>

namespace {

constexpr const char* Titles[] = {
    QT_TRANSLATE_NOOP("TWPreviewModel", "Item"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Size"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Age"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Why"),
};

// What a screen reader says before the path, in the order of TWPreviewFate.
constexpr const char* Fates[] = {
    QT_TRANSLATE_NOOP("TWPreviewModel", "Would be deleted: %1"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Not ticked but would still be deleted: %1"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Not ticked: %1"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Kept: %1"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Refused: %1"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Not looked at to the end: %1"),
};

// The same for what would happen, in the order of TWPlannedAction.
constexpr const char* Actions[] = {
    QT_TRANSLATE_NOOP("TWPreviewModel", "Would be deleted: %1"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Would lose entries: %1"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Would be asked to quit: %1"),
    QT_TRANSLATE_NOOP("TWPreviewModel", "Would be unmounted: %1"),
};

constexpr auto Unknown = "\u2026";
constexpr qint64 NanosecondsPerSecond = 1'000'000'000;

constexpr qint64 Day = 86'400; // in seconds

// An age is shown in the first of these units of which it has at least one.
struct Unit {
    qint64 seconds;
    const char* text;
};
constexpr Unit Units[] = {
    { 365 * Day, QT_TRANSLATE_NOOP("TWPreviewModel", "%1 y") },
    { 30 * Day, QT_TRANSLATE_NOOP("TWPreviewModel", "%1 mo") },
    { Day, QT_TRANSLATE_NOOP("TWPreviewModel", "%1 d") },
    { 3'600, QT_TRANSLATE_NOOP("TWPreviewModel", "%1 h") },
    { 60, QT_TRANSLATE_NOOP("TWPreviewModel", "%1 min") },
};
constexpr auto Now = QT_TRANSLATE_NOOP("TWPreviewModel", "now");

int alignment(int column)
{
    const bool number = column == TWPreviewModel::Size || column == TWPreviewModel::Age;
    return int(Qt::AlignVCenter) | (number ? Qt::AlignRight : Qt::AlignLeft);
}

}

TWPreviewModel::TWPreviewModel(TWPreviewWindowController& controller, QObject* parent)
    : QAbstractTableModel(parent)
    , controller_(controller)
    , folder_(QApplication::style()->standardIcon(QStyle::SP_DirIcon))
    , file_(QApplication::style()->standardIcon(QStyle::SP_FileIcon))
{
}

void TWPreviewModel::rowsReplaced()
{
    beginResetModel();
    rows_ = static_cast<int>(controller_.rows().size());
    endResetModel();
}

TWPreviewRow TWPreviewModel::rowAt(const QModelIndex& index) const
{
    return controller_.rows()[static_cast<std::size_t>(index.row())];
}

int TWPreviewModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : rows_;
}

int TWPreviewModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(std::size(Titles));
}

QVariant TWPreviewModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return alignment(section);
    if (role == Qt::InitialSortOrderRole)
        return section == Size ? Qt::DescendingOrder : Qt::AscendingOrder;
    return role == Qt::DisplayRole ? tr(Titles[section]) : QVariant();
}

QVariant TWPreviewModel::data(const QModelIndex& index, int role) const
{
    // When a new preview begins, the controller's rows are gone before the table's are.
    if (!index.isValid() || static_cast<std::size_t>(index.row()) >= controller_.rows().size())
        return {};
    const auto row = rowAt(index);
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return text(row, column);
    case Qt::ToolTipRole:
        return toolTip(row, column);
    case Qt::AccessibleTextRole:
        return accessibleText(row, column);
    case Qt::TextAlignmentRole:
        return alignment(column);
    case Qt::CheckStateRole:
        return column == Path ? QVariant(checkState(row)) : QVariant();
    case Qt::DecorationRole:
        return column == Path ? QVariant(icon(row)) : QVariant();
    case WarningRole:
        return column == Why
            && (controller_.fate(row) == TWPreviewFate::Refused
                || controller_.fate(row) == TWPreviewFate::DeletedAnyway);
    case PathRole:
        return column == Path && !controller_.item(row).isThing();
    case WordRole:
        return column == Path ? QVariant(TWQtText::shown(controller_.word(row))) : QVariant();
    default:
        return {};
    }
}

QIcon TWPreviewModel::icon(TWPreviewRow row) const
{
    const auto& item = controller_.item(row);
    if (item.isThing())
        return QIcon::fromTheme(controller_.preview()->cleaners()[row.cleaner]->row().icon, file_);
    return item.facts.kind == TWFileKind::Folder ? folder_ : file_;
}

// A file that stays has a row for each key.
std::string TWPreviewModel::withKey(TWPreviewRow row, const std::string& path) const
{
    return controller_.item(row).keepsFile() ? path + ": " + controller_.key(row) : path;
}

QVariant TWPreviewModel::text(TWPreviewRow row, int column) const
{
    switch (column) {
    case Path:
        return TWQtText::shown(withKey(row, controller_.shortPath(row)));
    case Size: {
        const auto action = controller_.item(row).action;
        if (action == TWPlannedAction::RemoveEntries)
            return TWQtText::shown(controller_.entries(row));
        if (action != TWPlannedAction::Delete)
            return {};
        const auto bytes = controller_.bytes(row);
        if (controller_.fate(row) == TWPreviewFate::Refused)
            return {}; // its size is not looked for
        return bytes ? TWQtText::exact(TWText::size(*bytes)) : QString(Unknown);
    }
    case Age:
        return age(row);
    default:
        return TWQtText::shown(controller_.why(row));
    }
}

QString TWPreviewModel::age(TWPreviewRow row) const
{
    const auto modified = controller_.item(row).facts.modified / NanosecondsPerSecond;
    if (modified == 0)
        return {}; // nothing was found at the path
    const auto age = QDateTime::currentSecsSinceEpoch() - modified;
    for (const auto& unit : Units) {
        if (age >= unit.seconds)
            return tr(unit.text).arg(QLocale().toString(age / unit.seconds));
    }
    return tr(Now);
}

QVariant TWPreviewModel::toolTip(TWPreviewRow row, int column) const
{
    if (column == Path)
        return TWQtText::toolTip(withKey(row, controller_.path(row)));
    if (column == Why)
        return TWQtText::toolTip(controller_.why(row));
    const auto modified = controller_.item(row).facts.modified / NanosecondsPerSecond;
    return column == Age && modified != 0 ? QLocale().toString(QDateTime::fromSecsSinceEpoch(modified)) : QVariant();
}

QString TWPreviewModel::accessibleText(TWPreviewRow row, int column) const
{
    if (column != Path)
        return text(row, column).toString();
    const QStringList parts{ text(row, Path).toString(), text(row, Size).toString(), text(row, Why).toString() };
    const auto fate = controller_.fate(row);
    const auto* text = fate == TWPreviewFate::Deleted ? Actions[static_cast<int>(controller_.item(row).action)]
                                                      : Fates[static_cast<int>(fate)];
    return tr(text).arg(parts.join(", "));
}

Qt::CheckState TWPreviewModel::checkState(TWPreviewRow row) const
{
    switch (controller_.fate(row)) {
    case TWPreviewFate::Deleted:
        return Qt::Checked;
    case TWPreviewFate::DeletedAnyway:
        return Qt::PartiallyChecked;
    default:
        return Qt::Unchecked;
    }
}

bool TWPreviewModel::setData(const QModelIndex& index, const QVariant&, int role)
{
    if (role != Qt::CheckStateRole || index.column() != Path)
        return false;
    const auto row = rowAt(index);
    controller_.tick({ &row, 1 }, controller_.fate(row) == TWPreviewFate::Deleted ? TWTick::Off : TWTick::On);
    emit dataChanged(index, index.siblingAtColumn(Why));
    return true;
}

Qt::ItemFlags TWPreviewModel::flags(const QModelIndex& index) const
{
    auto flags = QAbstractTableModel::flags(index) | Qt::ItemNeverHasChildren;
    if (index.isValid() && index.column() == Path)
        flags |= Qt::ItemIsUserCheckable;
    return flags;
}

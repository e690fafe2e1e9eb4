#include "ui/sheets/TWLogsModel.h"

#include "support/TWText.h"
#include "ui/parts/ImageAndTextCell.h"
#include "ui/parts/TWQtText.h"

#include <QApplication>
#include <QDateTime>
#include <QFontMetrics>
#include <QLocale>
#include <QStyle>

using Root = TWLogsNode::Root;
using State = TWLogsNode::State;

namespace {

constexpr const char* Titles[] = {
    QT_TRANSLATE_NOOP("TWLogsModel", "Item"),
    QT_TRANSLATE_NOOP("TWLogsModel", "Size"),
    QT_TRANSLATE_NOOP("TWLogsModel", "Date modified"),
};

constexpr auto Vanished = QT_TRANSLATE_NOOP("TWLogsModel", "It is no longer there. Uncheck it to forget it.");
constexpr auto Outside = QT_TRANSLATE_NOOP(
    "TWLogsModel", "It does not lie in a log folder, so it is never deleted. Uncheck it to forget it.");
constexpr auto Unread = QT_TRANSLATE_NOOP(
    "TWLogsModel", "It was not looked into: it could not be read, lies on another volume, or is nested too deep.");
constexpr auto Link = QT_TRANSLATE_NOOP("TWLogsModel", "A link. Only the link itself would be deleted.");
constexpr auto UserRoot
    = QT_TRANSLATE_NOOP("TWLogsModel", "The folders in your home folder in which programs keep their logs");
constexpr auto Below = QT_TRANSLATE_NOOP("TWLogsModel", "It belongs to a checked folder, which is deleted as a whole.");
constexpr auto BelowRoot
    = QT_TRANSLATE_NOOP("TWLogsModel", "It belongs to a checked folder, whose contents are deleted.");

// What a screen reader says after the name.
constexpr auto Checked = QT_TRANSLATE_NOOP("TWLogsModel", "checked");
constexpr auto Mixed = QT_TRANSLATE_NOOP("TWLogsModel", "partly checked");
constexpr auto Unchecked = QT_TRANSLATE_NOOP("TWLogsModel", "not checked");
constexpr auto Covered = QT_TRANSLATE_NOOP("TWLogsModel", "in a checked folder");

constexpr int RowPadding = 6;
constexpr std::int64_t NanosecondsPerMillisecond = 1'000'000;

// Dates stand on the right as well, so that they keep away from the sizes.
int alignment(int column)
{
    return int(Qt::AlignVCenter | (column == TWLogsModel::Item ? Qt::AlignLeft : Qt::AlignRight));
}

QDateTime dateOf(const TWLogsNode& node)
{
    return QDateTime::fromMSecsSinceEpoch(node.modified / NanosecondsPerMillisecond);
}

bool isKnown(const TWLogsNode& node)
{
    return node.state == State::There;
}

QIcon themeIcon(const char* name, QStyle::StandardPixmap fallback)
{
    return QIcon::fromTheme(name, QApplication::style()->standardIcon(fallback));
}

// The name without what the rotation of logs adds to it: "syslog.2" is a syslog.
QString unrotated(QString name)
{
    for (auto dot = name.lastIndexOf('.'); dot > 0; dot = name.lastIndexOf('.')) {
        bool isNumber = false;
        name.mid(dot + 1).toULongLong(&isNumber);
        if (!isNumber)
            break;
        name.truncate(dot);
    }
    return name;
}

// What is unusual about the node, or "".
QString remark(const TWLogsNode& node)
{
    if (node.state == State::Vanished)
        return TWLogsModel::tr(Vanished);
    if (node.state == State::Outside)
        return TWLogsModel::tr(Outside);
    if (node.isUnread)
        return TWLogsModel::tr(Unread);
    return isKnown(node) && node.kind == TWFileKind::Link ? TWLogsModel::tr(Link) : QString();
}

Qt::CheckState checkState(const TWLogsNode& node)
{
    return node.active == TWLogChecked ? Qt::Checked : node.active == TWLogMixed ? Qt::PartiallyChecked : Qt::Unchecked;
}

}

TWLogsModel::TWLogsModel(TWLogsWindowController& controller, QObject* parent)
    : QAbstractItemModel(parent)
    , controller_(controller)
    , deleted_(TWQtText::path(controller.bundle().resourcePath("deleted.png")))
    , warning_(QApplication::style()->standardIcon(QStyle::SP_MessageBoxWarning))
    , userRoot_(themeIcon("user-home", QStyle::SP_DirHomeIcon))
    , systemRoot_(themeIcon("computer", QStyle::SP_ComputerIcon))
    , folder_(themeIcon("folder", QStyle::SP_DirIcon))
    , link_(themeIcon("emblem-symbolic-link", QStyle::SP_FileLinkIcon))
    , file_(themeIcon("text-x-generic", QStyle::SP_FileIcon))
{
}

void TWLogsModel::treeWillChange()
{
    emit layoutAboutToBeChanged();
    places_.clear();
    for (const auto& index : persistentIndexList())
        places_.push_back({ index, nodeAt(index)->itemPath() });
}

void TWLogsModel::treeChanged()
{
    QModelIndexList before;
    QModelIndexList after;
    for (const auto& place : places_) {
        before.append(place.index);
        after.append(indexOf(controller_.find(place.path), place.index.column()));
    }
    places_.clear();
    changePersistentIndexList(before, after);
    emit layoutChanged();
}

TWLogsNode* TWLogsModel::nodeAt(const QModelIndex& index) const
{
    return static_cast<TWLogsNode*>(index.internalPointer());
}

QModelIndex TWLogsModel::indexOf(const TWLogsNode* node, int column) const
{
    const auto row = node ? controller_.rowOf(*node) : 0;
    if (!node || row == controller_.numberOfChildren(node->parentItem()))
        return {};
    return createIndex(static_cast<int>(row), column, node);
}

QModelIndex TWLogsModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, controller_.child(static_cast<std::size_t>(row), nodeAt(parent)));
}

QModelIndex TWLogsModel::parent(const QModelIndex& index) const
{
    return index.isValid() ? indexOf(nodeAt(index)->parentItem()) : QModelIndex();
}

int TWLogsModel::rowCount(const QModelIndex& parent) const
{
    return parent.column() > Item ? 0 : static_cast<int>(controller_.numberOfChildren(nodeAt(parent)));
}

// Does not count, because the tree asks for every row that it shows.
bool TWLogsModel::hasChildren(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return rowCount() > 0;
    return parent.column() == Item && TWLogsWindowController::isItemExpandable(*nodeAt(parent));
}

int TWLogsModel::columnCount(const QModelIndex&) const
{
    return static_cast<int>(std::size(Titles));
}

QVariant TWLogsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return alignment(section);
    return role == Qt::DisplayRole ? tr(Titles[section]) : QVariant();
}

QVariant TWLogsModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const auto& node = *nodeAt(index);
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return text(node, column);
    case Qt::CheckStateRole:
        return column == Item ? QVariant(checkState(node)) : QVariant();
    case Qt::DecorationRole:
        return column == Item ? QVariant(icon(node)) : QVariant();
    case Qt::TextAlignmentRole:
        return alignment(column);
    case Qt::SizeHintRole:
        return QSize(0, QFontMetrics(QApplication::font()).height() + RowPadding);
    case Qt::ToolTipRole:
        return toolTip(node, column);
    case Qt::AccessibleTextRole:
        return accessibleText(node, column);
    case ImageAndTextCell::GreyedRole:
        return !TWLogsWindowController::isEnabled(node);
    default:
        return {};
    }
}

QVariant TWLogsModel::text(const TWLogsNode& node, int column)
{
    if (column == Item)
        return TWQtText::shown(node.item);
    if (!isKnown(node) || (column == Modified && node.modified == 0))
        return {};
    return column == Size ? TWQtText::exact(TWText::size(node.bytes))
                          : QLocale().toString(dateOf(node), QLocale::ShortFormat);
}

QString TWLogsModel::toolTip(const TWLogsNode& node, int column) const
{
    const auto plain = [](const QString& line) { return TWQtText::toolTip(TWQtText::bytes(line)); };
    if (column == Size)
        return isKnown(node) ? plain(tr("%1 bytes on disk").arg(QLocale().toString(qulonglong(node.bytes)))) : "";
    if (column == Modified)
        return text(node, Modified).isNull() ? "" : plain(QLocale().toString(dateOf(node), QLocale::LongFormat));
    auto lines = node.root == Root::User ? plain(tr(UserRoot)) : TWQtText::toolTip(controller_.path(node));
    lines += plain(remark(node));
    if (!TWLogsWindowController::isEnabled(node)) {
        const bool isInRoot = node.parent->root != Root::None && node.parent->active == TWLogChecked;
        lines += plain(tr(isInRoot ? BelowRoot : Below));
    }
    return lines;
}

QString TWLogsModel::accessibleText(const TWLogsNode& node, int column) const
{
    if (column != Item)
        return text(node, column).toString();
    const auto* state = node.active == TWLogChecked ? Checked : node.active == TWLogMixed ? Mixed : Unchecked;
    QStringList parts{ TWQtText::shown(node.item), tr(TWLogsWindowController::isEnabled(node) ? state : Covered),
        remark(node) };
    parts.removeAll(QString());
    return parts.join(", ");
}

// By kind and name only: the disk is not asked for a row.
QIcon TWLogsModel::icon(const TWLogsNode& node) const
{
    if (node.state == State::Vanished)
        return deleted_;
    if (node.state == State::Outside)
        return warning_;
    if (node.root != Root::None)
        return node.root == Root::User ? userRoot_ : systemRoot_;
    if (node.isFolder())
        return folder_;
    return node.kind == TWFileKind::Link ? link_ : fileIcon(node.item);
}

QIcon TWLogsModel::fileIcon(const std::string& name) const
{
    const auto type = types_.mimeTypeForFile(unrotated(TWQtText::shown(name)), QMimeDatabase::MatchExtension);
    if (type.isDefault())
        return file_;
    auto& icon = icons_[type.iconName()];
    if (icon.isNull())
        icon = QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName(), file_));
    return icon;
}

bool TWLogsModel::setData(const QModelIndex& index, const QVariant&, int role)
{
    if (!index.isValid() || role != Qt::CheckStateRole || index.column() != Item)
        return false;
    auto& node = *nodeAt(index);
    const auto before = node.active;
    controller_.setObjectValue(node, before == TWLogChecked ? TWLogUnchecked : TWLogChecked);
    emit dataChanged(index, index);
    return node.active != before;
}

Qt::ItemFlags TWLogsModel::flags(const QModelIndex& index) const
{
    auto flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (!index.isValid())
        return Qt::NoItemFlags;
    const auto& node = *nodeAt(index);
    flags.setFlag(Qt::ItemNeverHasChildren, !node.isFolder());
    flags.setFlag(Qt::ItemIsUserCheckable, index.column() == Item && TWLogsWindowController::isEnabled(node));
    return flags;
}

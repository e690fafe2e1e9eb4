#include "ui/windows/TWResultsModel.h"

#include "ui/parts/TWQtText.h"

#include <QColor>

namespace {

// What a screen reader says, indexed by TWMessageType.
constexpr const char* AccessibleTexts[] = {
    "%1",
    QT_TRANSLATE_NOOP("TWResultsModel", "Success: %1"),
    QT_TRANSLATE_NOOP("TWResultsModel", "Failure: %1"),
};

QColor colour(const TWMessage& message)
{
    const auto colour = message.colour();
    return QColor::fromRgbF(
        static_cast<float>(colour.red), static_cast<float>(colour.green), static_cast<float>(colour.blue));
}

}

TWResultsModel::TWResultsModel(const TWResultsWindowController& controller, const QString& iconFolder, QObject* parent)
    : QAbstractTableModel(parent)
    , controller_(controller)
    , icons_{ QIcon(iconFolder + "/message-information.svg"), QIcon(iconFolder + "/message-success.svg"),
        QIcon(iconFolder + "/message-failure.svg") }
    , rows_(static_cast<int>(controller.messages().size()))
{
}

int TWResultsModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : rows_;
}

int TWResultsModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : LineColumn + 1;
}

QVariant TWResultsModel::data(const QModelIndex& index, int role) const
{
    // When the list is emptied, the controller's lines are gone before the rows are.
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)
        || static_cast<std::size_t>(index.row()) >= controller_.messages().size())
        return {};
    const auto& message = controller_.messages()[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::BackgroundRole:
        return colour(message);
    case Qt::ForegroundRole: // readable on all three backgrounds in any colour scheme
        return QColor(Qt::black);
    case ConcernsFailureRole:
        return message.type == TWMessageType::Failure || message.explainsFailure;
    case CleanerRole:
        return int{ message.cleaner };
    default:
        return index.column() == LineColumn ? lineData(message, role) : cleanerData(message, role);
    }
}

QVariant TWResultsModel::cleanerData(const TWMessage& message, int role)
{
    if (role != Qt::DisplayRole || message.cleaner == TWNoCleaner)
        return {};
    return QLatin1String(TWCleanerTable()[static_cast<std::size_t>(message.cleaner)].title);
}

QVariant TWResultsModel::lineData(const TWMessage& message, int role) const
{
    const auto type = static_cast<int>(message.type);
    switch (role) {
    case Qt::DisplayRole:
        return TWQtText::shown(message.text);
    case Qt::ToolTipRole:
        return TWQtText::toolTip(message.text);
    case Qt::AccessibleTextRole:
        return tr(AccessibleTexts[type]).arg(TWQtText::shown(message.text));
    case Qt::DecorationRole:
        return icons_[type];
    default:
        return {};
    }
}

void TWResultsModel::messagesRemoved()
{
    beginResetModel();
    rows_ = 0;
    endResetModel();
}

void TWResultsModel::messagesAdded(std::size_t count)
{
    if (static_cast<int>(count) <= rows_)
        return;
    beginInsertRows({}, rows_, static_cast<int>(count) - 1);
    rows_ = static_cast<int>(count);
    endInsertRows();
}

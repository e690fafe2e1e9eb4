#include "ui/parts/TWRecordDelegate.h"

#include "ui/parts/TWCellStyle.h"
#include "ui/parts/TWRecordModel.h"

#include <QComboBox>
#include <QPainter>

using Kind = TWRecordColumn::Kind;

namespace {

const TWRecordColumn& columnAt(const QModelIndex& index)
{
    return static_cast<const TWRecordModel*>(index.model())->column(index.column());
}

int arrowWidth(const QWidget& widget)
{
    return widget.fontMetrics().height() + 6;
}

// Shows that a click opens a pop-up menu.
void drawArrow(QPainter& painter, const QStyleOptionViewItem& option)
{
    const int width = arrowWidth(*option.widget);
    const int inset = (option.rect.height() - option.fontMetrics.height() * 2 / 3) / 2;
    QStyleOption arrow;
    arrow.initFrom(option.widget);
    arrow.rect = QStyle::alignedRect(option.direction, Qt::AlignRight | Qt::AlignVCenter,
        QSize(width, option.rect.height() - 2 * inset), option.rect);
    if (option.state & QStyle::State_Selected)
        arrow.palette.setColor(QPalette::WindowText, option.palette.color(QPalette::HighlightedText));
    option.widget->style()->drawPrimitive(QStyle::PE_IndicatorArrowDown, &arrow, &painter, option.widget);
}

void styleNote(QStyleOptionViewItem& option, bool warning)
{
    if (warning) {
        TWCellStyle::showWarning(option);
        return;
    }
    option.palette.setColor(QPalette::Text, TWCellStyle::quiet(option.palette.color(QPalette::Text)));
}

}

void TWRecordDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    ImageAndTextCell::initStyleOption(option, index);
    switch (columnAt(index).kind) {
    case Kind::Path:
        // A path is written from left to right in every language; otherwise its first slash would move to its end.
        option->direction = Qt::LeftToRight;
        break;
    case Kind::Choice:
        // Leaves room for the arrow.
        option->features |= QStyleOptionViewItem::HasDecoration;
        option->decorationPosition = QStyleOptionViewItem::Right;
        option->decorationSize = QSize(arrowWidth(*option->widget), 1);
        break;
    case Kind::Note:
        styleNote(*option, index.data(TWRecordModel::WarningRole).toBool());
        break;
    default:
        break;
    }
}

void TWRecordDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    ImageAndTextCell::paint(painter, option, index);
    if (columnAt(index).kind == Kind::Choice)
        drawArrow(*painter, option);
}

QWidget* TWRecordDelegate::createEditor(
    QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    const auto& column = columnAt(index);
    auto* editor = column.kind == Kind::Choice ? createPopUp(parent, index)
                                               : QStyledItemDelegate::createEditor(parent, option, index);
    if (editor) {
        editor->setObjectName(column.name + "Editor");
        editor->setAccessibleName(column.title);
        if (column.kind == Kind::Path)
            editor->setLayoutDirection(Qt::LeftToRight);
    }
    return editor;
}

QWidget* TWRecordDelegate::createPopUp(QWidget* parent, const QModelIndex& index) const
{
    const auto& column = columnAt(index);
    auto* popUp = new QComboBox(parent);
    for (int number = 0; number < column.choiceCount; ++number)
        popUp->addItem(column.choiceLabel(number), qlonglong(number));
    const auto chosen = index.data(Qt::EditRole);
    if (popUp->findData(chosen) == -1)
        popUp->addItem(column.choiceLabel(chosen.toLongLong()), chosen);
    auto* self = const_cast<TWRecordDelegate*>(this);
    connect(popUp, &QComboBox::activated, self, [self, popUp] {
        emit self->commitData(popUp);
        emit self->closeEditor(popUp);
    });
    // Queued, because the view has not placed the editor yet.
    QMetaObject::invokeMethod(popUp, &QComboBox::showPopup, Qt::QueuedConnection);
    return popUp;
}

void TWRecordDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (auto* popUp = qobject_cast<QComboBox*>(editor))
        popUp->setCurrentIndex(popUp->findData(index.data(Qt::EditRole)));
    else
        QStyledItemDelegate::setEditorData(editor, index);
}

void TWRecordDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    if (auto* popUp = qobject_cast<QComboBox*>(editor))
        model->setData(index, popUp->currentData(), Qt::EditRole);
    else
        QStyledItemDelegate::setModelData(editor, model, index);
}

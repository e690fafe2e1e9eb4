#include "ui/TWFilesDelegate.h"

#include "ui/TWFilesTableModel.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPainter>

namespace {

constexpr float QuietOpacity = 0.72F;

bool isDark(const QPalette& palette)
{
    return palette.color(QPalette::Base).lightness() < 128;
}

// Amber that is readable on the palette's background.
QColor warningColor(const QPalette& palette)
{
    return isDark(palette) ? QColor(255, 204, 102) : QColor(133, 66, 0);
}

void showNote(QStyleOptionViewItem& option, bool warning)
{
    auto color = option.palette.color(QPalette::Text);
    color.setAlphaF(QuietOpacity);
    if (warning) {
        color = warningColor(option.palette);
        option.features |= QStyleOptionViewItem::HasDecoration;
        option.icon = option.widget->style()->standardIcon(QStyle::SP_MessageBoxWarning);
        const int size = option.fontMetrics.height();
        option.decorationSize = QSize(size, size);
    }
    option.palette.setColor(QPalette::Text, color);
}

}

TWFilesDelegate::TWFilesDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{
}

int TWFilesDelegate::arrowWidth(const QWidget* widget)
{
    return widget->fontMetrics().height() + 6;
}

void TWFilesDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    // Styles frame a check box in a darker shade of the window, which a dark table swallows.
    if (index.column() == TWFilesTableModel::Active && isDark(option->palette))
        option->palette.setColor(QPalette::Window, option->palette.color(QPalette::Text));
    else if (index.column() == TWFilesTableModel::Path)
        option->textElideMode = Qt::ElideMiddle;
    else if (index.column() == TWFilesTableModel::Note)
        showNote(*option, index.data(TWFilesTableModel::WarningRole).toBool());
}

void TWFilesDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    if (index.column() != TWFilesTableModel::WhatToDelete)
        return;
    QStyleOption arrow;
    arrow.initFrom(option.widget);
    arrow.rect = option.rect;
    arrow.rect.setLeft(option.rect.right() - arrowWidth(option.widget));
    const int inset = (option.rect.height() - option.fontMetrics.height() * 2 / 3) / 2;
    arrow.rect.adjust(0, inset, 0, -inset);
    if (option.state & QStyle::State_Selected)
        arrow.palette.setColor(QPalette::WindowText, option.palette.color(QPalette::HighlightedText));
    option.widget->style()->drawPrimitive(QStyle::PE_IndicatorArrowDown, &arrow, painter, option.widget);
}

QWidget* TWFilesDelegate::createEditor(
    QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    if (index.column() == TWFilesTableModel::WhatToDelete)
        return createPopUp(parent, index);
    auto* editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (editor) {
        const bool path = index.column() == TWFilesTableModel::Path;
        editor->setObjectName(path ? "pathLineEdit" : "nameLineEdit");
        editor->setAccessibleName(path ? tr("Path") : tr("Name"));
    }
    return editor;
}

QWidget* TWFilesDelegate::createPopUp(QWidget* parent, const QModelIndex& index) const
{
    auto* popUp = new QComboBox(parent);
    popUp->setObjectName("whatToDeleteComboBox");
    popUp->setAccessibleName(tr("What to delete"));
    for (qlonglong kind = 0; kind < TWFilesTableModel::KindCount; ++kind)
        popUp->addItem(TWFilesTableModel::kindLabel(kind), kind);
    // An unknown kind, which deletes nothing, is offered too, so that it stays unless the user picks another.
    const qlonglong kind = index.data(Qt::EditRole).toLongLong();
    if (popUp->findData(kind) == -1)
        popUp->addItem(TWFilesTableModel::kindLabel(kind), kind);
    auto* self = const_cast<TWFilesDelegate*>(this);
    connect(popUp, &QComboBox::activated, self, [self, popUp] {
        emit self->commitData(popUp);
        emit self->closeEditor(popUp);
    });
    // Queued: the view has not placed the editor yet.
    QMetaObject::invokeMethod(popUp, &QComboBox::showPopup, Qt::QueuedConnection);
    return popUp;
}

void TWFilesDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const
{
    if (auto* popUp = qobject_cast<QComboBox*>(editor))
        popUp->setCurrentIndex(popUp->findData(index.data(Qt::EditRole)));
    else
        QStyledItemDelegate::setEditorData(editor, index);
}

void TWFilesDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    if (auto* popUp = qobject_cast<QComboBox*>(editor))
        model->setData(index, popUp->currentData(), Qt::EditRole);
    else
        QStyledItemDelegate::setModelData(editor, model, index);
}

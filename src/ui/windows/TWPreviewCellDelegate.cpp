#include "ui/windows/TWPreviewCellDelegate.h"

#include "ui/parts/TWCellStyle.h"
#include "ui/parts/TWCheckBox.h"
#include "ui/windows/TWPreviewModel.h"

#include <QPainter>

namespace {

constexpr int MarkWidth = 2; // in pixels

}

void TWPreviewCellDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    QStyledItemDelegate::initStyleOption(option, index);
    if (index.column() == TWPreviewModel::Path) {
        // A path is written from left to right in every language; otherwise its first slash would move to its end.
        option->direction = Qt::LeftToRight;
        option->textElideMode = Qt::ElideMiddle;
        TWCheckBox::showFrame(option->palette);
    } else if (index.data(TWPreviewModel::WarningRole).toBool()) {
        TWCellStyle::showWarning(*option);
    }
}

void TWPreviewCellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    if (const auto word = index.data(TWPreviewModel::WordRole).toString(); !word.isEmpty()) {
        auto full = option;
        initStyleOption(&full, index);
        markWord(*painter, full, word);
    }
    if (option.state & QStyle::State_HasFocus)
        TWCellStyle::drawFocus(*painter, option);
}

// Underlines the word where it stands in the elided text. It may be cut off there; the reason beside it names it too.
void TWPreviewCellDelegate::markWord(QPainter& painter, const QStyleOptionViewItem& option, const QString& word)
{
    const auto* style = option.widget->style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
    const auto place
        = style->subElementRect(QStyle::SE_ItemViewItemText, &option, option.widget).adjusted(margin, 0, -margin, 0);
    const auto shown = option.fontMetrics.elidedText(option.text, Qt::ElideMiddle, place.width());
    const auto at = shown.indexOf(word, shown.lastIndexOf('/') + 1, Qt::CaseInsensitive);
    if (at == -1)
        return;
    const int left = place.left() + option.fontMetrics.horizontalAdvance(shown.left(at));
    const int width = option.fontMetrics.horizontalAdvance(shown.mid(at, word.size()));
    const int bottom = place.center().y() + option.fontMetrics.height() / 2;
    const bool selected = option.state & QStyle::State_Selected;
    const auto color
        = selected ? option.palette.color(QPalette::HighlightedText) : TWCellStyle::warningColor(option.palette);
    painter.fillRect(QRect(left, bottom - MarkWidth, width, MarkWidth), color);
}

#include "ui/windows/TWPreviewCellDelegate.h"

#include "ui/parts/TWCellStyle.h"
#include "ui/windows/TWPreviewModel.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr int MarkWidth = 2; // in pixels

// Where the text of the cell is drawn.
QRect textRect(const QStyleOptionViewItem& option)
{
    const auto* style = option.widget->style();
    const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
    return style->subElementRect(QStyle::SE_ItemViewItemText, &option, option.widget).adjusted(margin, 0, -margin, 0);
}

// Shortens the name around the word, which stays readable.
QString elidedName(const QString& name, const QString& word, const QFontMetrics& metrics, int width)
{
    const auto at = word.isEmpty() ? -1 : name.indexOf(word, 0, Qt::CaseInsensitive);
    if (at == -1 || metrics.horizontalAdvance(name) <= width)
        return metrics.elidedText(name, Qt::ElideMiddle, width);
    const auto found = name.mid(at, word.size());
    const int left = std::max(0, width - metrics.horizontalAdvance(found));
    const auto before = metrics.elidedText(name.left(at), Qt::ElideMiddle, left / 2);
    const auto after = name.mid(at + word.size());
    return before + found + metrics.elidedText(after, Qt::ElideMiddle, left - metrics.horizontalAdvance(before));
}

// Shortens the folders before the name, and the name only if it does not fit alone.
QString elidedPath(const QString& path, const QString& word, const QFontMetrics& metrics, int width)
{
    if (metrics.horizontalAdvance(path) <= width)
        return path;
    const auto name = path.mid(path.lastIndexOf('/', -2));
    const int left = width - metrics.horizontalAdvance(name);
    const auto folders = metrics.elidedText(path.left(path.size() - name.size()), Qt::ElideMiddle, left);
    return folders.isEmpty() ? elidedName(name.mid(1), word, metrics, width) : folders + name;
}

}

void TWPreviewCellDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    ImageAndTextCell::initStyleOption(option, index);
    TWCellStyle::showSelection(*option);
    if (index.data(TWPreviewModel::PathRole).toBool()) {
        // A path is written from left to right in every language; otherwise its first slash would move to its end.
        option->direction = Qt::LeftToRight;
        const auto word = index.data(TWPreviewModel::WordRole).toString();
        option->text = elidedPath(option->text, word, option->fontMetrics, textRect(*option).width());
    } else if (index.data(TWPreviewModel::WarningRole).toBool()) {
        TWCellStyle::showWarning(*option);
    }
}

void TWPreviewCellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    ImageAndTextCell::paint(painter, option, index);
    if (const auto word = index.data(TWPreviewModel::WordRole).toString(); !word.isEmpty()) {
        auto full = option;
        initStyleOption(&full, index);
        markWord(*painter, full, word);
    }
}

// Underlines the word where it stands in the name. The reason beside it names it, too.
void TWPreviewCellDelegate::markWord(QPainter& painter, const QStyleOptionViewItem& option, const QString& word)
{
    const auto place = textRect(option);
    const auto& metrics = option.fontMetrics;
    const auto at = option.text.indexOf(word, option.text.lastIndexOf('/') + 1, Qt::CaseInsensitive);
    if (at == -1)
        return;
    const int left = place.left() + metrics.horizontalAdvance(option.text.left(at));
    const int width = metrics.horizontalAdvance(option.text.mid(at, word.size()));
    const bool selected = option.state & QStyle::State_Selected;
    const auto color
        = selected ? option.palette.color(QPalette::HighlightedText) : TWCellStyle::warningColor(option.palette);
    painter.fillRect(QRect(left, place.center().y() + metrics.ascent() / 2 + 1, width, MarkWidth), color);
}

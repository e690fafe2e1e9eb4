#pragma once

#include <QStyleOptionViewItem>

class QPainter;

// How the cells of all tables look.
namespace TWCellStyle {

// An amber that is readable on the palette's background.
QColor warningColor(const QPalette&);

// Shows a warning sign before the text and gives the text that colour.
void showWarning(QStyleOptionViewItem&);

// Greys the text of a cell that stays enabled.
void showGreyed(QStyleOptionViewItem&);

// The colour of a text that is less important.
QColor quiet(QColor);

// Subdues the selection of a view without the focus, so that it is seen where the keys go.
void showSelection(QStyleOptionViewItem&);

// Frames the current cell. In a selected row, which has one colour, it could not be seen otherwise.
void drawFocus(QPainter&, const QStyleOptionViewItem&);

}

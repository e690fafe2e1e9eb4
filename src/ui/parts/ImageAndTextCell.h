#pragma once

#include <QStyledItemDelegate>

// Draws a cell of an editor's table or tree: a check box, an icon of 16 x 16 and a text that is elided in the middle,
// as far as the model has them. The current cell gets a frame. Needs a view as its parent.
class ImageAndTextCell : public QStyledItemDelegate {
    Q_OBJECT

public:
    // True for a cell that is greyed although it can be selected: it does not matter, or it cannot be changed now.
    static constexpr int GreyedRole = Qt::UserRole + 100;

    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter*, const QStyleOptionViewItem&, const QModelIndex&) const override;

protected:
    void initStyleOption(QStyleOptionViewItem*, const QModelIndex&) const override;
};

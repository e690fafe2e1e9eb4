#pragma once

#include "ui/parts/ImageAndTextCell.h"

// Paints the cells of a preview's table: paths elided in the middle, with the word that matched marked in the name, and
// reasons with a warning sign. Works only with a TWPreviewModel.
class TWPreviewCellDelegate final : public ImageAndTextCell {
    Q_OBJECT

public:
    using ImageAndTextCell::ImageAndTextCell;

    void paint(QPainter*, const QStyleOptionViewItem&, const QModelIndex&) const override;

protected:
    void initStyleOption(QStyleOptionViewItem*, const QModelIndex&) const override;

private:
    static void markWord(QPainter&, const QStyleOptionViewItem&, const QString& word);
};

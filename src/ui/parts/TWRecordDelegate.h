#pragma once

#include "ui/parts/ImageAndTextCell.h"

struct TWRecordColumn;

// Paints and edits the cells of a record table. Works only with a TWRecordModel.
class TWRecordDelegate final : public ImageAndTextCell {
    Q_OBJECT

public:
    using ImageAndTextCell::ImageAndTextCell;

    void paint(QPainter*, const QStyleOptionViewItem&, const QModelIndex&) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex&) const override;
    void setEditorData(QWidget* editor, const QModelIndex&) const override;
    void setModelData(QWidget* editor, QAbstractItemModel*, const QModelIndex&) const override;

protected:
    void initStyleOption(QStyleOptionViewItem*, const QModelIndex&) const override;

private:
    QWidget* createPopUp(QWidget* parent, const QModelIndex&) const;
};

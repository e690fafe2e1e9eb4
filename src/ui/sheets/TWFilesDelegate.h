#pragma once

#include <QStyledItemDelegate>

// How the cells of the Files table look and are edited.
class TWFilesDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit TWFilesDelegate(QObject* parent = nullptr);

    // What a pop-up needs besides its text.
    static int arrowWidth(const QWidget*);

    void paint(QPainter*, const QStyleOptionViewItem&, const QModelIndex&) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem&, const QModelIndex&) const override;
    void setEditorData(QWidget* editor, const QModelIndex&) const override;
    void setModelData(QWidget* editor, QAbstractItemModel*, const QModelIndex&) const override;

protected:
    void initStyleOption(QStyleOptionViewItem*, const QModelIndex&) const override;

private:
    QWidget* createPopUp(QWidget* parent, const QModelIndex&) const;
};

#include "ui/parts/ImageAndTextCell.h"

#include "ui/parts/TWCellStyle.h"
#include "ui/parts/TWCheckBox.h"

#include <QPainter>
#include <QWidget>

namespace {

constexpr QSize IconSize(16, 16);
constexpr double GreyedOpacity = 0.5; // because on a dark background styles hardly change a disabled icon

QIcon greyed(const QIcon& icon, const QWidget& view)
{
    const auto whole = icon.pixmap(IconSize, view.devicePixelRatioF(), QIcon::Disabled);
    QPixmap faded(whole.size());
    faded.setDevicePixelRatio(whole.devicePixelRatio());
    faded.fill(Qt::transparent);
    QPainter painter(&faded);
    painter.setOpacity(GreyedOpacity);
    painter.drawPixmap(0, 0, whole);
    painter.end();
    QIcon result(faded);
    for (const auto mode : { QIcon::Disabled, QIcon::Selected })
        result.addPixmap(faded, mode); // otherwise Qt would make its own
    return result;
}

}

void ImageAndTextCell::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const
{
    option->decorationSize = IconSize;
    QStyledItemDelegate::initStyleOption(option, index);
    option->textElideMode = Qt::ElideMiddle;
    const bool isGreyed = index.data(GreyedRole).toBool();
    if (isGreyed)
        TWCellStyle::showGreyed(*option);
    if (option->features & QStyleOptionViewItem::HasCheckIndicator)
        TWCheckBox::showFrame(option->palette);
    if (!(option->features & QStyleOptionViewItem::HasDecoration))
        return;
    option->decorationSize = IconSize; // a smaller icon would shift the text
    if (isGreyed || !(option->state & QStyle::State_Enabled))
        option->icon = greyed(option->icon, *option->widget);
}

void ImageAndTextCell::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    if (option.state & QStyle::State_HasFocus)
        TWCellStyle::drawFocus(*painter, option);
}

#include "ui/parts/TWCheckBox.h"

#include <QStyleOptionButton>

void TWCheckBox::showFrame(QPalette& palette)
{
    if (palette.color(QPalette::Base).lightness() < 128)
        palette.setColor(QPalette::Window, palette.color(QPalette::Text));
}

void TWCheckBox::initStyleOption(QStyleOptionButton* option) const
{
    QCheckBox::initStyleOption(option);
    showFrame(option->palette);
}

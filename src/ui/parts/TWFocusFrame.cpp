#include "ui/parts/TWFocusFrame.h"

#include <QApplication>
#include <QPushButton>

TWFocusFrame::TWFocusFrame(QWidget* window)
    : QFocusFrame(window)
{
    connect(qApp, &QApplication::focusChanged, this, [this](const QWidget*, QWidget* focused) { follow(focused); });
}

// The frame stays where it is while another window has the focus.
void TWFocusFrame::follow(QWidget* focused)
{
    if (focused && focused->window() == window())
        setWidget(qobject_cast<QPushButton*>(focused));
}

#pragma once

#include <QCheckBox>

// A check box whose frame can be seen in dark colours too, where styles draw it in a shade of the window.
class TWCheckBox final : public QCheckBox {
    Q_OBJECT

public:
    using QCheckBox::QCheckBox;

    // The same for a palette that a style draws a check box with.
    static void showFrame(QPalette&);

protected:
    void initStyleOption(QStyleOptionButton*) const override;
};

#pragma once

#include <QCheckBox>

// A check box whose frame is also visible in dark colour schemes, where styles draw it in a shade of the window's
// colour.
class TWCheckBox final : public QCheckBox {
    Q_OBJECT

public:
    using QCheckBox::QCheckBox;

    // Changes a palette so that a style draws a check box with such a frame.
    static void showFrame(QPalette&);

protected:
    void initStyleOption(QStyleOptionButton*) const override;
};

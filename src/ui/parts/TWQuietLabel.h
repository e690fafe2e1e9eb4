#pragma once

#include <QLabel>

// One or two lines of small, subdued text. If the text needs more, the second line is elided in the middle, so that the
// end can be read, and the tooltip shows the whole text.
class TWQuietLabel final : public QLabel {
    Q_OBJECT

public:
    explicit TWQuietLabel(QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    bool event(QEvent*) override;
    void paintEvent(QPaintEvent*) override;

private:
    QFont smallFont() const;
    QStringList lines(int width) const;
};

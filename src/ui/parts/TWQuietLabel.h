#pragma once

#include <QLabel>

// One line in small, subdued letters. What does not fit is cut at the end, and the whole text is then its tooltip.
class TWQuietLabel final : public QLabel {
    Q_OBJECT

public:
    explicit TWQuietLabel(QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent*) override;
    void paintEvent(QPaintEvent*) override;

private:
    QFont smallFont() const;
};

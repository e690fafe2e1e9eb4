#pragma once

#include <QLabel>

// One line in small, subdued letters. A text that does not fit is elided at the end and shown in full by the tooltip.
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

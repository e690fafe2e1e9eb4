#pragma once

#include <QLabel>

// One line of small, subdued text. A text that does not fit is elided at the end; the tooltip then shows it in full.
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

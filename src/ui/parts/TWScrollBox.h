#pragma once

#include <QScrollArea>

// A scroll area that takes as much room as its content wants and scrolls only if the window has less.
class TWScrollBox final : public QScrollArea {
    Q_OBJECT

public:
    explicit TWScrollBox(QWidget* content, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject*, QEvent*) override;
};

// Returns the wanted size of a window, reduced so that the window and its frame fit on its screen.
QSize TWFitToScreen(const QWidget& window, const QSize& wanted);

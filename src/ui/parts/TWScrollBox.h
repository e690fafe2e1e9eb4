#pragma once

#include <QScrollArea>

// Takes as much room as its content wants, and scrolls the content where a window has less.
class TWScrollBox final : public QScrollArea {
    Q_OBJECT

public:
    explicit TWScrollBox(QWidget* content, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject*, QEvent*) override;
};

// The wanted size of a window, made smaller where its screen has no room for it and its frame.
QSize TWFitToScreen(const QWidget& window, const QSize& wanted);

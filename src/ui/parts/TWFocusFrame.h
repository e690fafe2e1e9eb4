#pragma once

#include <QFocusFrame>

// A frame around the button of its window that has the focus, which styles hardly show.
class TWFocusFrame final : public QFocusFrame {
    Q_OBJECT

public:
    explicit TWFocusFrame(QWidget* window);

private:
    void follow(QWidget* focused);
};

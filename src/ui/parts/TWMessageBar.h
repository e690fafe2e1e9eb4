#pragma once

#include <QFrame>

class QLabel;

// One warning inside a sheet: an icon and a text that wraps. Hidden while there is nothing to say.
class TWMessageBar final : public QFrame {
    Q_OBJECT

public:
    explicit TWMessageBar(QWidget* parent = nullptr);

    // "" hides the bar.
    void setText(const QString& text);
    QString text() const;

private:
    QLabel* text_;
};

#pragma once

#include <QFrame>

class QLabel;
class QPushButton;

// One message inside a window: a text that wraps, for a warning an icon and, if there is something to do about it, a
// button. Hidden while there is nothing to say.
class TWMessageBar final : public QFrame {
    Q_OBJECT

public:
    enum class Kind { Warning, Notice };

    // The label and the button are named after the bar: "messageBar" has "messageBarLabel" and "messageBarButton".
    TWMessageBar(Kind, const QString& objectName, const QString& buttonText = {}, QWidget* parent = nullptr);

    // "" hides the bar.
    void setText(const QString& text);
    QString text() const;

signals:
    void pressed();

private:
    QLabel* text_;
};

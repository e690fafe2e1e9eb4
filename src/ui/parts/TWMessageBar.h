#pragma once

#include <QFrame>

class TWTextLabel;

// A message inside a window: a text that wraps, an icon if it is a warning, and a button if the user can do something
// about it. Hidden while it has no text.
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
    TWTextLabel* text_;
};

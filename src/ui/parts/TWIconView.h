#pragma once

#include <QIcon>
#include <QLabel>

// An icon of fixed size, sharp at every screen scale and greyed out while disabled.
class TWIconView final : public QLabel {
    Q_OBJECT

public:
    TWIconView(int size, QWidget* parent);

    void setIcon(const QIcon&);

protected:
    void paintEvent(QPaintEvent*) override;

private:
    QIcon icon_;
};

#pragma once

#include <QTableView>
#include <QUrl>

// The table of the Files sheet: says what to do when it is empty, and takes files dropped on it.
class TWFilesTable final : public QTableView {
    Q_OBJECT

public:
    explicit TWFilesTable(QWidget* parent = nullptr);

    // After the model was set.
    void setUpColumns();

signals:
    void filesDropped(const QList<QUrl>& files);

protected:
    void keyPressEvent(QKeyEvent*) override;
    void paintEvent(QPaintEvent*) override;
    void dragEnterEvent(QDragEnterEvent*) override;
    void dragMoveEvent(QDragMoveEvent*) override;
    void dropEvent(QDropEvent*) override;
};

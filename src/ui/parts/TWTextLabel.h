#pragma once

#include <QLabel>

// A plain text that wraps and can be selected. A name that is wider than the label is elided in the middle; the tooltip
// then shows the whole text.
class TWTextLabel final : public QLabel {
    Q_OBJECT

public:
    explicit TWTextLabel(const QString& objectName, QWidget* parent = nullptr);

    void setWholeText(const QString&);
    const QString& wholeText() const { return whole_; }

protected:
    void resizeEvent(QResizeEvent*) override;

private:
    void fit();

    QString whole_;
};

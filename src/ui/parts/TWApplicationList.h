#pragma once

#include "platform/TWApplications.h"

#include <QListView>

class TWApplicationModel;

// A list of applications with their icons, of which the user selects one. Loads only the icons that are seen. Shows a
// text while it is empty.
class TWApplicationList final : public QListView {
    Q_OBJECT

public:
    explicit TWApplicationList(QWidget* parent = nullptr);

    void setApplications(std::vector<TWApplication>);

    // False until they are set.
    bool hasApplications() const { return set_; }

    // Shows only those with the text in a name, ignoring case. The selected one stays selected if it is among them;
    // else the first one is, so that Return chooses it, but none if the text is "".
    void search(const QString& text);

    std::optional<TWApplication> selected() const;

    void setEmptyText(const QString& text);

    QSize sizeHint() const override;

signals:
    void selectedChanged();

protected:
    void paintEvent(QPaintEvent*) override;

private:
    TWApplicationModel* model_;
    bool set_ = false;
    QString emptyText_;
};

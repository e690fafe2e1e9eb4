#pragma once

#include "platform/TWApplications.h"

#include <QListView>

class TWApplicationModel;

// A list of applications with their icons, of which the user selects one or, in another selection mode, several. Loads
// only the icons that are seen. Shows a text while it is empty.
class TWApplicationList final : public QListView {
    Q_OBJECT

public:
    explicit TWApplicationList(SelectionMode, QWidget* parent = nullptr);

    void setApplications(std::vector<TWApplication>);

    // False until they are set.
    bool hasApplications() const { return set_; }

    // Shows only those with the text in a name, ignoring case. Selected ones that are among them stay selected; if none
    // is, the first one is selected, so that Return chooses it, but none if the text is "".
    void search(const QString& text);

    // In the order of the list.
    std::vector<TWApplication> selected() const;

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

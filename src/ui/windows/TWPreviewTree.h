#pragma once

#include "app/TWPreviewWindowController.h"

#include <QTreeWidget>

// The cleaners of a preview and their rules, with check boxes, numbers of items that would be deleted and their sizes.
// The first line stands for all of them.
class TWPreviewTree final : public QTreeWidget {
    Q_OBJECT

public:
    TWPreviewTree(TWPreviewWindowController&, QWidget* parent);

    // Call this when there is a new preview, or none any more.
    void replace();

    // Call this when groups, numbers or ticks have changed.
    void renew();

protected:
    void initViewItemOption(QStyleOptionViewItem*) const override;
    void drawRow(QPainter*, const QStyleOptionViewItem&, const QModelIndex&) const override;
    void resizeEvent(QResizeEvent*) override;

signals:
    // Another line is the current one: that of a cleaner, of one of its groups or, with neither, the first one.
    void chosen(std::optional<std::uint32_t> cleaner, std::optional<std::size_t> group);

private:
    QTreeWidgetItem* newLine(const std::string& name, int cleaner, int group) const;
    void addGroups(QTreeWidgetItem& line, const TWCleanerPreview&, int cleaner);
    void show(QTreeWidgetItem&, const TWPreviewCount&);
    static void showNumbers(QTreeWidgetItem&, std::uint64_t items, std::uint64_t bytes);
    void choose(const QTreeWidgetItem*);
    void tick(const QTreeWidgetItem&);

    TWPreviewWindowController& controller_;
};

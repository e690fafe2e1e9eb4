#pragma once

#include "editors/TWLogsWindowController.h"

#include <QAbstractItemModel>
#include <QHash>
#include <QIcon>
#include <QMimeDatabase>

// The model of the logs tree. An index points to a node of the controller; the model keeps nothing for it and makes
// texts and icons only when the tree asks. Selection and expansion survive a change of the tree.
class TWLogsModel final : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column { Item, Size, Modified };

    TWLogsModel(TWLogsWindowController&, QObject* parent);

    // Call these when the nodes are about to change and when they have changed. No index of before may be used after.
    void treeWillChange();
    void treeChanged();

    // Both take and return nothing for what the tree does not show.
    TWLogsNode* nodeAt(const QModelIndex&) const;
    QModelIndex indexOf(const TWLogsNode*, int column = Item) const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex&) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    bool hasChildren(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant headerData(int section, Qt::Orientation, int role) const override;
    QVariant data(const QModelIndex&, int role) const override;

    // A click on the check box, whatever the value: a box that is not checked becomes so.
    bool setData(const QModelIndex&, const QVariant& value, int role) override;
    Qt::ItemFlags flags(const QModelIndex&) const override;

private:
    struct Place {
        QModelIndex index;
        std::string path;
    };

    static QVariant text(const TWLogsNode&, int column);
    QString toolTip(const TWLogsNode&, int column) const;
    QString accessibleText(const TWLogsNode&, int column) const;
    QIcon icon(const TWLogsNode&) const;
    QIcon fileIcon(const std::string& name) const;

    TWLogsWindowController& controller_;
    std::vector<Place> places_; // of the persistent indexes, while the tree changes
    const QMimeDatabase types_;
    const QIcon deleted_;
    const QIcon warning_;
    const QIcon userRoot_;
    const QIcon systemRoot_;
    const QIcon folder_;
    const QIcon link_;
    const QIcon file_;
    mutable QHash<QString, QIcon> icons_; // of other files, by the name in the icon theme
};

#pragma once

#include <QTreeView>

// What a TWQuickLookOutlineView tells about its keys.
class TWQuickLookOutlineViewDelegate {
public:
    // The space bar was pressed.
    virtual void outlineViewSpaceKeyDown(const QKeyEvent&) { }

protected:
    ~TWQuickLookOutlineViewDelegate() = default;
};

// A tree whose space bar asks for a preview of the selected row. It does nothing else with that key: it neither ticks
// nor selects nor searches. All other keys do what they do in any tree.
class TWQuickLookOutlineView final : public QTreeView {
    Q_OBJECT

public:
    using QTreeView::QTreeView;

    // May be nullptr.
    void setDelegate(TWQuickLookOutlineViewDelegate* delegate) { delegate_ = delegate; }

protected:
    void keyPressEvent(QKeyEvent*) override;

private:
    TWQuickLookOutlineViewDelegate* delegate_ = nullptr;
};

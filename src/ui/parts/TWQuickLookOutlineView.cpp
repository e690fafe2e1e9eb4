#include "ui/parts/TWQuickLookOutlineView.h"

#include <QKeyEvent>

// A held space bar counts once; otherwise the preview would open and close again and again.
void TWQuickLookOutlineView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() != Qt::Key_Space)
        QTreeView::keyPressEvent(event);
    else if (delegate_ && !event->isAutoRepeat())
        delegate_->outlineViewSpaceKeyDown(*event);
}

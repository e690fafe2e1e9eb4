#include "ui/windows/TWPreviewTree.h"

#include "support/TWText.h"
#include "ui/parts/TWCellStyle.h"
#include "ui/parts/TWCheckBox.h"
#include "ui/parts/TWQtText.h"

#include <QHeaderView>
#include <QSignalBlocker>

namespace {

constexpr auto All = QT_TRANSLATE_NOOP("TWPreviewTree", "All");
constexpr auto Titles = { QT_TRANSLATE_NOOP("TWPreviewTree", "Cleaner and rule"),
    QT_TRANSLATE_NOOP("TWPreviewTree", "Items"), QT_TRANSLATE_NOOP("TWPreviewTree", "Size") };

enum Column { Name, Items, Size };

// Of a line; -1 stands for all of them.
constexpr int CleanerRole = Qt::UserRole;
constexpr int GroupRole = Qt::UserRole + 1;
constexpr int None = -1;

constexpr int RowPadding = 6;
constexpr int Indentation = 14; // in pixels
constexpr int NarrowestWithSizes = 44; // in characters
constexpr int ItemsWidth = 10;
constexpr int SizeWidth = 11;

}

TWPreviewTree::TWPreviewTree(TWPreviewWindowController& controller, QWidget* parent)
    : QTreeWidget(parent)
    , controller_(controller)
{
    setObjectName("cleanersTreeWidget");
    setAccessibleName(tr("Cleaners and rules"));
    QStringList titles;
    for (const auto* title : Titles)
        titles.append(tr(title));
    setHeaderLabels(titles);
    for (const int column : { Items, Size })
        headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    setUniformRowHeights(true);
    setRootIsDecorated(false);
    setTabKeyNavigation(false);
    setIndentation(Indentation);
    setTextElideMode(Qt::ElideMiddle);
    header()->setStretchLastSection(false);
    header()->setSectionResizeMode(Name, QHeaderView::Stretch);
    // Measuring the contents would take seconds with thousands of rules.
    header()->resizeSection(Items, ItemsWidth * fontMetrics().averageCharWidth());
    header()->resizeSection(Size, SizeWidth * fontMetrics().averageCharWidth());
    connect(this, &QTreeWidget::currentItemChanged, this, [this](const auto* line) { choose(line); });
    connect(this, &QTreeWidget::itemChanged, this, [this](const auto* line, int column) {
        if (column == Name)
            tick(*line);
    });
}

void TWPreviewTree::initViewItemOption(QStyleOptionViewItem* option) const
{
    QTreeWidget::initViewItemOption(option);
    TWCellStyle::showSelection(*option);
    TWCheckBox::showFrame(option->palette);
}

void TWPreviewTree::drawRow(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const
{
    QTreeWidget::drawRow(painter, option, index);
    if (!hasFocus() || index.row() != currentIndex().row() || index.parent() != currentIndex().parent())
        return;
    auto full = option;
    full.state.setFlag(QStyle::State_Selected, selectionModel()->isSelected(index));
    TWCellStyle::drawFocus(*painter, full);
}

// In a narrow tree the names of the rules need the room.
void TWPreviewTree::resizeEvent(QResizeEvent* event)
{
    QTreeWidget::resizeEvent(event);
    setColumnHidden(Size, width() < NarrowestWithSizes * fontMetrics().averageCharWidth());
}

void TWPreviewTree::replace()
{
    const QSignalBlocker blocker(this);
    clear();
    const auto* preview = controller_.preview();
    if (!preview || preview->cleaners().empty())
        return;
    auto* all = newLine(TWQtText::bytes(tr(All)), None, None);
    addTopLevelItem(all);
    for (std::size_t cleaner = 0; cleaner < preview->cleaners().size(); ++cleaner) {
        auto* line = newLine(preview->cleaners()[cleaner]->row().title, static_cast<int>(cleaner), None);
        all->addChild(line);
        line->setExpanded(true);
    }
    all->setExpanded(true);
    setCurrentItem(all);
    renew();
}

QTreeWidgetItem* TWPreviewTree::newLine(const std::string& name, int cleaner, int group) const
{
    auto* line = new QTreeWidgetItem;
    line->setText(Name, TWQtText::shown(name));
    line->setToolTip(Name, TWQtText::toolTip(name));
    line->setData(Name, CleanerRole, cleaner);
    line->setData(Name, GroupRole, group);
    line->setFlags(line->flags() | Qt::ItemIsUserCheckable);
    line->setCheckState(Name, Qt::Checked);
    line->setSizeHint(Name, QSize(0, fontMetrics().height() + RowPadding));
    line->setTextAlignment(Items, Qt::AlignRight | Qt::AlignVCenter);
    line->setTextAlignment(Size, Qt::AlignRight | Qt::AlignVCenter);
    return line;
}

void TWPreviewTree::renew()
{
    const QSignalBlocker blocker(this);
    auto* all = topLevelItem(0);
    if (!all || !controller_.preview())
        return;
    const auto& cleaners = controller_.preview()->cleaners();
    for (int cleaner = 0; cleaner < all->childCount(); ++cleaner) {
        auto* line = all->child(cleaner);
        const auto& each = *cleaners[static_cast<std::size_t>(cleaner)];
        addGroups(*line, each, cleaner);
        for (int group = 0; group < line->childCount(); ++group)
            show(*line->child(group), controller_.counts().of(cleaner, group));
        show(*line, controller_.counts().of(cleaner));
        const auto distinct = controller_.counts().distinct(cleaner);
        showNumbers(*line, distinct.ticked, distinct.bytes);
    }
    show(*all, controller_.counts().all());
    // An item that several rules name counts once here, as in the window's sentence.
    const auto& total = controller_.preview()->total();
    if (controller_.preview()->ended())
        showNumbers(*all, total.items, total.bytes);
}

// A cleaner without rules needs no line for the only reason of its items.
void TWPreviewTree::addGroups(QTreeWidgetItem& line, const TWCleanerPreview& preview, int cleaner)
{
    const auto& groups = preview.groups();
    if (groups.size() == 1 && groups.front().rule == TWNone)
        return;
    QList<QTreeWidgetItem*> added;
    for (auto group = line.childCount(); group < static_cast<int>(groups.size()); ++group) {
        const auto& first = preview.plan()->items[groups[static_cast<std::size_t>(group)].begin];
        added.append(newLine(preview.ruleName(first), cleaner, group));
        added.back()->setFlags(added.back()->flags() & ~Qt::ItemIsUserCheckable);
    }
    line.addChildren(added); // at once, because the tree lays itself out for each call
    if (!preview.isPlanned())
        return; // more items of a rule may follow, so that it cannot be ticked or unticked yet
    for (int group = 0; group < line.childCount(); ++group) {
        auto& child = *line.child(group);
        const auto count = controller_.counts().of(static_cast<std::size_t>(cleaner), static_cast<std::size_t>(group));
        const bool refused = count.items > 0 && count.items == count.refused;
        if (!refused && !(child.flags() & Qt::ItemIsUserCheckable))
            child.setFlags(child.flags() | Qt::ItemIsUserCheckable);
    }
}

void TWPreviewTree::showNumbers(QTreeWidgetItem& line, std::uint64_t items, std::uint64_t bytes)
{
    const auto set = [&line](int column, const QString& text) {
        if (line.text(column) != text)
            line.setText(column, text);
    };
    set(Items, TWQtText::exact(TWText::number(items)));
    set(Size, bytes > 0 ? TWQtText::exact(TWText::size(bytes)) : QString());
}

// A check box stays as the user has set it until everything is counted. Where all items are refused it stays empty and
// cannot be ticked.
void TWPreviewTree::show(QTreeWidgetItem& line, const TWPreviewCount& count)
{
    const bool isRule = line.data(Name, GroupRole) != None;
    const bool isAll = line.data(Name, CleanerRole) == None;
    if (isRule || (isAll && !controller_.preview()->ended()))
        showNumbers(line, count.ticked, count.bytes);
    if (count.items == 0 || controller_.counts().outdated())
        return;
    if (count.items == count.refused && line.flags() & Qt::ItemIsUserCheckable)
        line.setFlags(line.flags() & ~Qt::ItemIsUserCheckable);
    const auto state = count.allTicked() ? Qt::Checked : count.noneTicked() ? Qt::Unchecked : Qt::PartiallyChecked;
    if (line.checkState(Name) != state)
        line.setCheckState(Name, state);
}

void TWPreviewTree::choose(const QTreeWidgetItem* line)
{
    if (!line)
        return;
    const int cleaner = line->data(Name, CleanerRole).toInt();
    const int group = line->data(Name, GroupRole).toInt();
    emit chosen(cleaner == None ? std::nullopt : std::optional<std::uint32_t>(cleaner),
        group == None ? std::nullopt : std::optional<std::size_t>(group));
}

void TWPreviewTree::tick(const QTreeWidgetItem& line)
{
    const int cleaner = line.data(Name, CleanerRole).toInt();
    const int group = line.data(Name, GroupRole).toInt();
    const auto tick = line.checkState(Name) == Qt::Unchecked ? TWTick::Off : TWTick::On;
    const auto position = static_cast<std::size_t>(cleaner);
    if (cleaner == None)
        controller_.tickAll(tick);
    else if (group == None)
        controller_.tick(position, tick);
    else
        controller_.tick(
            position, controller_.preview()->cleaners()[position]->groups()[static_cast<std::size_t>(group)], tick);
}

#include "ui/sheets/TWVolumesSheet.h"

#include "support/TWText.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWQuietLabel.h"
#include "ui/parts/TWRecordTable.h"

#include <QHideEvent>
#include <QKeySequence>
#include <QLabel>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr auto Empty = QT_TRANSLATE_NOOP(
    "TWVolumesSheet", "No volume is mounted that could be unmounted. Connect one, and it appears here.");

// The preferred size, in characters and lines of text.
constexpr int SheetWidth = 120;
constexpr int SheetHeight = 26;

constexpr int NoteLines = 2;

}

TWVolumesSheet::TWVolumesSheet(TWVolumesWindowController& controller, QWidget* parent)
    : TWSheet("volumesSheet", tr("Volumes"), parent)
    , controller_(controller)
    , table_(new TWRecordTable(columns(), [this] { return static_cast<int>(controller_.volumesArray().size()); }))
    , unsaved_(new QLabel(tr("Not saved; in use until Tidewell quits.")))
{
    setPreferredSize(SheetWidth, SheetHeight);
    setIntroduction(tr("The Volumes cleaner unmounts and ejects the checked &volumes. Each change is saved at once. "
                       "Volumes appear here when they are mounted."));
    setContent(createContent(), table_);
    createButtons();
    controller_.setView(this);
}

TWVolumesSheet::~TWVolumesSheet()
{
    controller_.sheetClosed();
    controller_.setView(nullptr);
}

std::vector<TWRecordColumn> TWVolumesSheet::columns()
{
    using Column = TWRecordColumn;
    const auto isMounted = [this](int row) { return controller_.isMounted(row); };
    return {
        Column::check(
            "active", tr("Unmount"), [this](int row) { return volume(row).active; },
            [this](int row, bool active) {
                controller_.setActive(row, active);
                showState();
            }),
        Column::text("volumeName", tr("Name"), [this](int row) { return volume(row).volumeName; }).usedIf(isMounted),
        Column::path("volumePath", tr("Mounted at"), [this](int row) { return volume(row).volumePath; })
            .usedIf(isMounted),
        Column::note("state", tr("State"), [this](int row) { return note(row); }),
    };
}

// What matters most comes first, because a long note is shortened.
TWRecordNote TWVolumesSheet::note(int row) const
{
    if (!controller_.isMounted(row))
        return { controller_.isTableReadable() ? tr("No volume there now") : QString(), false };
    const auto* const facts = controller_.facts(row);
    const bool isInUse = facts && facts->use.isInUse;
    QStringList texts;
    if (isInUse && facts->use.holders.empty())
        texts.append(tr("in use"));
    else if (isInUse)
        texts.append(tr("in use by %1").arg(TWQtText::shown(TWText::join(facts->use.holders, ", "))));
    if (facts && facts->freeBytes)
        texts.append(tr("%1 free").arg(TWQtText::shown(TWText::size(*facts->freeBytes))));
    texts.append(TWQtText::shown(controller_.device(row)));
    texts.removeAll(QString());
    return { texts.join(", "), isInUse && volume(row).active };
}

QWidget* TWVolumesSheet::createContent()
{
    table_->setObjectName("volumesTableView");
    table_->setAccessibleName(tr("Volumes"));
    table_->setAcceptDrops(false);
    unsaved_->setObjectName("unsavedLabel");
    unsaved_->setAlignment(Qt::AlignTrailing | Qt::AlignVCenter);
    auto policy = unsaved_->sizePolicy();
    policy.setRetainSizeWhenHidden(true); // so that nothing moves
    unsaved_->setSizePolicy(policy);
    auto* content = new QWidget;
    note_ = new TWQuietLabel(content);
    note_->setObjectName("noteLabel");
    note_->setMinimumHeight(NoteLines * note_->sizeHint().height());
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(table_, 1);
    layout->addWidget(note_);
    layout->addWidget(unsaved_);
    connect(table_, &TWRecordTable::selectedRecordChanged, this, &TWVolumesSheet::selectionChanged);
    return content;
}

void TWVolumesSheet::createButtons()
{
    auto* ok = addButton(QDialogButtonBox::Ok, "okPushButton", tr("OK"));
    auto* help = addButton(QDialogButtonBox::Help, "helpPushButton", tr("Help"));
    help->setShortcut(QKeySequence::HelpContents);
    setDefaultButton(ok);
    connect(ok, &QPushButton::clicked, this, [this] { controller_.ok(); });
    connect(help, &QPushButton::clicked, this, [this] { controller_.help(); });
}

void TWVolumesSheet::showEvent(QShowEvent* event)
{
    TWSheet::showEvent(event);
    if (!event->spontaneous())
        controller_.sheetOpened();
}

void TWVolumesSheet::hideEvent(QHideEvent* event)
{
    TWSheet::hideEvent(event);
    if (!event->spontaneous())
        controller_.sheetClosed();
}

void TWVolumesSheet::closeSheet()
{
    accept();
}

void TWVolumesSheet::openHelpAnchor(const std::string& anchor)
{
    emit helpRequested(TWQtText::exact(anchor));
}

// A checked volume moves to the beginning, so the selected row is looked for by its path.
void TWVolumesSheet::reloadTable()
{
    const auto selected = selectedPath_;
    table_->reload();
    const auto& volumes = controller_.volumesArray();
    const auto found
        = std::find_if(volumes.begin(), volumes.end(), [&](const auto& each) { return each.volumePath == selected; });
    const int row = static_cast<int>(found - volumes.begin());
    if (found != volumes.end() && row != table_->selectedRow())
        table_->showRow(row);
    showState();
}

void TWVolumesSheet::notesChanged()
{
    table_->notesChanged();
}

void TWVolumesSheet::showMessage(const std::string& message)
{
    TWSheet::showMessage(TWQtText::shown(message));
}

void TWVolumesSheet::selectionChanged()
{
    const int row = table_->selectedRow();
    selectedPath_ = row == -1 ? "" : volume(row).volumePath;
    note_->setText(table_->selectedNote());
}

// While nobody knows what is mounted, an empty table must not say that nothing is.
void TWVolumesSheet::showState()
{
    const auto problem = TWQtText::shown(controller_.problem());
    const bool isOfFile = !controller_.list().problem().empty();
    setProblem(problem, isOfFile ? Cause::DamagedFile : Cause::Other);
    table_->setEmptyText(problem.isEmpty() || isOfFile ? tr(Empty) : problem);
    unsaved_->setVisible(controller_.hasUnsavedEdits());
}

#include "ui/sheets/TWKeepSheet.h"

#include "ui/parts/TWPathChooser.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWRecordTable.h"

#include <QLabel>
#include <QShowEvent>

using Kind = TWKeepEntry::Kind;

namespace {

// The preferred size, in characters and lines of text.
constexpr int SheetWidth = 140;
constexpr int SheetHeight = 34;

// The number of kinds of entries.
constexpr int KindCount = 3;

QString kindLabel(std::int64_t kind)
{
    switch (static_cast<Kind>(kind)) {
    case Kind::FolderWithContents:
        return TWKeepSheet::tr("This folder with everything in it");
    case Kind::Names:
        return TWKeepSheet::tr("Everything with such a name");
    default:
        return TWKeepSheet::tr("This item");
    }
}

}

TWKeepSheet::TWKeepSheet(TWKeepWindowController& controller, QWidget* parent)
    : TWRecordSheet(controller, "keep", tr("Keep List"), parent)
    , controller_(controller)
{
    setPreferredSize(SheetWidth, SheetHeight);
    setRecords(columns(),
        { tr("What is on this &list is never deleted, whatever rule or cleaner names it, except from the Trash. "
             "Added entries count at once. Removed and changed entries stay in force until you press OK."),
            tr("Keep list"),
            tr("Nothing is kept. Press + to choose a file or folder or to enter a name, or drop a file here."),
            tr("Add a file, a folder or a name"), tr("Remove the selected entry"),
            tr("The name \"%1\" is not valid UTF-8, so the list cannot hold it. Keep the folder around it instead, or "
               "enter the name with \"?\" in the place of such bytes.") });
    // Unlike in the other sheets, not every edit is in use.
    findChild<QLabel*>("unsavedLabel")->setText(tr("Not saved; removed entries stay in force until you press OK."));
    chooser().addEntry(tr("Enter a &Name"), [this] { addName(); });
    controller_.setView(this);
}

TWKeepSheet::~TWKeepSheet()
{
    controller_.setView(nullptr);
}

const TWKeepEntry& TWKeepSheet::entry(int row) const
{
    return controller_.entries()[static_cast<std::size_t>(row)].entry();
}

std::vector<TWRecordColumn> TWKeepSheet::columns()
{
    using Column = TWRecordColumn;
    return {
        Column::path(
            "what", tr("What is kept"), [this](int row) { return entry(row).text; },
            [this](int row, const std::string& text) { controller_.setText(row, text); }),
        Column::choice(
            "how", tr("How"), KindCount, kindLabel,
            [this](int row) { return static_cast<std::int64_t>(entry(row).kind); },
            [this](int row, std::int64_t kind) { controller_.setKind(row, static_cast<Kind>(kind)); }),
        Column::note("note", tr("Note"),
            [this](int row) {
                const auto note = controller_.note(row);
                return TWRecordNote{ TWQtText::shown(note.text), note.warning };
            }),
    };
}

void TWKeepSheet::showEvent(QShowEvent* event)
{
    TWRecordSheet::showEvent(event);
    // If the default list is missing, there is no damaged file that OK would keep.
    if (!event->spontaneous() && controller_.list().problem().empty())
        showMessage(TWQtText::shown(controller_.problem()));
}

QString TWKeepSheet::problem() const
{
    const auto& problem = controller_.list().problem();
    if (problem.empty())
        return {};
    return tr("%1 The entries below are the default ones; your own are not shown. Until you press OK, which puts the "
              "entries below in force, nothing at all is deleted.")
        .arg(TWQtText::shown(problem));
}

void TWKeepSheet::addRecord()
{
    const auto title = TWQtText::bytes(tr("Select a file or folder to keep"));
    choosePath(title, TWQtText::bytes(tr("Choose")), [this](const std::optional<std::string>& path) {
        if (path)
            controller_.addPath(*path);
    });
}

void TWKeepSheet::addName()
{
    controller_.addEntry({ Kind::Names, "" });
    table().setFocus();
    table().edit(table().currentIndex());
}

void TWKeepSheet::removeRecord(int row)
{
    const auto removed = controller_.entries()[static_cast<std::size_t>(row)];
    controller_.removeEntry(row);
    offerUndo(tr("The entry \"%1\" was removed.").arg(TWQtText::shown(removed.entry().text)), [this, row, removed] {
        const int place = std::min(row, controller_.recordCount());
        controller_.insertEntry(place, removed);
        table().showRow(place);
    });
}

#pragma once

#include "editors/TWKeepWindowController.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWRecordTable.h"
#include "ui/sheets/TWRecordSheet.h"

#include <algorithm>

// The base class of the sheets of rules. What a rule names can be put on the keep list, and the removal of a rule can
// be undone. The controller derives from TWRulesEditor.
template <typename Controller>
class TWRulesSheet : public TWRecordSheet {
protected:
    // Both controllers must outlive the sheet. A subclass sets itself as the view.
    TWRulesSheet(Controller& controller, TWKeepWindowController& keepList, const QString& name, const QString& title,
        QWidget* parent)
        : TWRecordSheet(controller, name, title, parent)
        , controller_(controller)
        , keepList_(keepList)
    {
    }

    // Call this once in the constructor, in the place of setRecords().
    void setRules(std::vector<TWRecordColumn> columns, Texts texts)
    {
        setRecords(std::move(columns), std::move(texts));
        TWControls::addTableAction(table(), "keepAction", tr("&Keep What This Rule Names"), { Qt::CTRL | Qt::Key_K },
            [this] { keepSelected(); });
    }

    Controller& controller() const { return controller_; }
    const auto& rule(int row) const { return controller_.rule(row); }

    TWRecordColumn activeColumn()
    {
        return TWRecordColumn::check(
            "active", tr("Active"), [this](int row) { return rule(row).active; },
            [this](int row, bool active) { controller().setActive(row, active); });
    }

    TWRecordColumn noteColumn() const
    {
        return TWRecordColumn::note("note", tr("Matches now"), [this](int row) {
            const auto note = controller_.note(row);
            return TWRecordNote{ TWQtText::shown(note.text), note.warning };
        });
    }

private:
    virtual std::string ruleName(int row) const = 0;

    // Why the keep list cannot hold what the rule names, or "".
    virtual QString whyNotKept(int /*row*/) const { return {}; }

    QString problem() const override { return TWQtText::shown(controller_.problem()); }
    void addRecord() override { controller_.add(); }
    void removeRecord(int row) override;
    void keepSelected();

    Controller& controller_;
    TWKeepWindowController& keepList_;
};

template <typename Controller>
void TWRulesSheet<Controller>::removeRecord(int row)
{
    const auto removed = rule(row);
    const auto name = TWQtText::shown(ruleName(row));
    controller_.remove();
    offerUndo(tr("The rule \"%1\" was removed.").arg(name), [this, row, removed] {
        const int place = std::min(row, controller_.recordCount());
        controller_.insertRule(place, removed);
        table().showRow(place);
    });
}

template <typename Controller>
void TWRulesSheet<Controller>::keepSelected()
{
    const int row = table().selectedRow();
    if (row == -1 || rule(row).filePath.empty())
        return;
    auto problem = whyNotKept(row);
    if (problem.isEmpty())
        problem = TWQtText::shown(keepList_.keep(controller_.absolutePath(row)));
    if (problem.isEmpty())
        showNotice(tr("\"%1\" is on the keep list now.").arg(TWQtText::shown(rule(row).filePath)));
    else
        showMessage(problem);
    controller_.sheetOpened(); // the notes change
}

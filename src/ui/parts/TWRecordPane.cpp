#include "ui/parts/TWRecordPane.h"

#include "ui/parts/TWQuietLabel.h"
#include "ui/parts/TWRecordTable.h"

#include <QToolButton>
#include <QVBoxLayout>

namespace {

QToolButton* smallButton(const QString& sign, const QString& objectName, const QString& title)
{
    auto* button = new QToolButton;
    button->setText(sign);
    button->setObjectName(objectName);
    button->setAccessibleName(title);
    button->setToolTip(title);
    button->setFocusPolicy(Qt::StrongFocus);
    const int side = button->sizeHint().height() + 4;
    button->setFixedSize(side, side);
    return button;
}

}

TWRecordPane::TWRecordPane(TWRecordTable* table, const QString& addTitle, const QString& removeTitle, QWidget* parent)
    : QWidget(parent)
    , table_(table)
    , addButton_(smallButton("+", "addToolButton", addTitle))
    , removeButton_(smallButton(QString(QChar(0x2212)), "removeToolButton", removeTitle))
    , note_(new TWQuietLabel(this))
{
    note_->setObjectName("noteLabel");
    auto* below = new QHBoxLayout;
    // Always two lines high, so that nothing moves when another record is selected.
    below->addStrut(2 * fontMetrics().lineSpacing());
    below->addWidget(addButton_);
    below->addWidget(removeButton_);
    below->addWidget(note_, 1, Qt::AlignVCenter);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(table_, 1);
    layout->addLayout(below);
    connect(table_, &TWRecordTable::selectedRecordChanged, this, &TWRecordPane::showSelected);
    connect(table_, &TWRecordTable::removeRequested, this, &TWRecordPane::removeRequested);
    connect(addButton_, &QToolButton::clicked, this, [this] {
        table_->finishEditing();
        emit addRequested();
    });
    connect(removeButton_, &QToolButton::clicked, this, [this] {
        table_->finishEditing();
        emit removeRequested();
    });
    showSelected();
}

void TWRecordPane::showSelected()
{
    removeButton_->setEnabled(table_->selectedRow() != -1);
    note_->setText(table_->selectedNote());
}

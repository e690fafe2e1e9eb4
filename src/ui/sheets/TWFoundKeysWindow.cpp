#include "ui/sheets/TWFoundKeysWindow.h"

#include "editors/TWRecentItemsWindowController.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWTextLabel.h"

#include <QGridLayout>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>

#include <algorithm>

namespace {

// The preferred size, in characters and lines of text.
constexpr int WindowWidth = 110;
constexpr int WindowHeight = 28;

// Shares of the width.
constexpr int KeysShare = 2;
constexpr int ValuesShare = 3;

QLabel* label(const QString& text, QWidget* buddy)
{
    auto* label = new QLabel(text);
    label->setBuddy(buddy);
    return label;
}

}

TWFoundKeysWindow::TWFoundKeysWindow(TWRecentItemsWindowController& controller, const Texts& texts, QWidget* parent)
    : TWSheet("foundKeysWindow", {}, parent)
    , controller_(controller)
    , keys_(new QListWidget)
    , values_(new QPlainTextEdit)
{
    setAttribute(Qt::WA_DeleteOnClose);
    TWControls::setTitle(*this, TWQtText::shown(texts.title), controller.places());
    setPreferredSize(WindowWidth, WindowHeight);
    keys_->setObjectName("foundKeysTableView");
    keys_->setAccessibleName(tr("Keys"));
    keys_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    keys_->setUniformItemSizes(true);
    values_->setObjectName("foundKeysTextView");
    values_->setAccessibleName(tr("Values of the current key"));
    values_->setReadOnly(true);
    values_->setTabChangesFocus(true);
    setContent(createContent(texts.explanation), keys_);
    createButtons();
    connect(keys_, &QListWidget::currentRowChanged, this, &TWFoundKeysWindow::showValues);
    for (const auto& found : controller_.foundKeysArray())
        keys_->addItem(TWQtText::shown(found.key));
    keys_->setCurrentRow(0);
}

QWidget* TWFoundKeysWindow::createContent(const std::string& explanation)
{
    auto* explaining = new TWTextLabel("foundKeysLabel");
    explaining->setWholeText(TWQtText::shown(explanation));
    auto* content = new QWidget;
    auto* grid = new QGridLayout(content);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->addWidget(explaining, 0, 0, 1, 2);
    grid->addWidget(label(tr("&Keys:"), keys_), 1, 0);
    grid->addWidget(label(tr("&Values of the current key:"), values_), 1, 1);
    grid->addWidget(keys_, 2, 0);
    grid->addWidget(values_, 2, 1);
    grid->setRowStretch(2, 1);
    grid->setColumnStretch(0, KeysShare);
    grid->setColumnStretch(1, ValuesShare);
    return content;
}

void TWFoundKeysWindow::createButtons()
{
    auto* create = addButton(tr("C&reate"), QDialogButtonBox::AcceptRole, "createButton");
    create->setAccessibleName(tr("Create a rule from the selected keys"));
    auto* show = addButton(tr("&Show Preferences File"), QDialogButtonBox::ActionRole, "showPreferencesFileButton");
    show->setAccessibleName(tr("Show Preferences File"));
    auto* cancel = addButton(QDialogButtonBox::Cancel, "cancelPushButton", tr("Cancel"));
    setDefaultButton(create);
    connect(keys_, &QListWidget::itemSelectionChanged, create,
        [this, create] { create->setEnabled(!keys_->selectedItems().isEmpty()); });
    connect(create, &QPushButton::clicked, this, [this] { controller_.createFromSelectedKey(); });
    connect(show, &QPushButton::clicked, this, [this] {
        showMessage({});
        controller_.showPreferencesFile();
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
}

std::vector<int> TWFoundKeysWindow::selectedKeys() const
{
    std::vector<int> rows;
    for (const auto& index : keys_->selectionModel()->selectedRows())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void TWFoundKeysWindow::showValues(int row)
{
    if (row < 0)
        return;
    QStringList lines;
    for (const auto& value : controller_.foundKeysArray()[static_cast<std::size_t>(row)].values)
        lines.append(TWQtText::shown(value));
    values_->setPlainText(lines.join('\n'));
}

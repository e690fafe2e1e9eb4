#include "ui/sheets/TWFilesSheet.h"

#include "support/TWPath.h"
#include "ui/parts/TWMessageBar.h"
#include "ui/parts/TWQtText.h"
#include "ui/sheets/TWFilesTable.h"
#include "ui/sheets/TWFilesTableModel.h"
#include "ui/windows/TWHelpWindow.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QShowEvent>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// In characters and lines of text.
constexpr int SheetWidth = 180;
constexpr int SheetHeight = 34;

QToolButton* smallButton(const QString& sign, const QString& objectName, const QString& name)
{
    auto* button = new QToolButton;
    button->setText(sign);
    button->setObjectName(objectName);
    button->setAccessibleName(name);
    button->setToolTip(name);
    button->setFocusPolicy(Qt::StrongFocus);
    const int side = button->sizeHint().height() + 4;
    button->setFixedSize(side, side);
    return button;
}

}

TWFilesSheet::TWFilesSheet(TWFilesWindowController& controller, TWHelpWindow& helpWindow, QWidget* parent)
    : QDialog(parent, Qt::Sheet)
    , controller_(controller)
    , helpWindow_(helpWindow)
    , model_(new TWFilesTableModel(controller, this))
    , table_(new TWFilesTable)
    , messageBar_(new TWMessageBar)
{
    setObjectName("filesSheet");
    setWindowTitle(tr("Files"));
    setWindowModality(Qt::WindowModal);
    auto* introduction
        = new QLabel(tr("The Files cleaner carries out every active rule. Changes count at once; OK also saves them."));
    introduction->setObjectName("introductionLabel");
    introduction->setWordWrap(true);
    createTable();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(introduction);
    layout->addWidget(messageBar_);
    layout->addWidget(table_, 1);
    layout->addLayout(createRuleButtons());
    layout->addWidget(createSheetButtons());
    resize(SheetWidth * fontMetrics().averageCharWidth(), SheetHeight * fontMetrics().lineSpacing());
    table_->setFocus();
    showSelection();
    controller_.setView(this);
}

TWFilesSheet::~TWFilesSheet()
{
    controller_.setView(nullptr);
    controller_.sheetClosed();
}

void TWFilesSheet::createTable()
{
    table_->setModel(model_);
    table_->setUpColumns();
    connect(table_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &TWFilesSheet::showSelection);
    connect(model_, &QAbstractItemModel::dataChanged, this, &TWFilesSheet::showSelection);
    connect(table_, &TWFilesTable::filesDropped, this, &TWFilesSheet::addDropped);
    // Of the table alone, so that it still deletes characters where a cell is being edited.
    auto* deleteKey = new QShortcut(QKeySequence::Delete, table_, nullptr, nullptr, Qt::WidgetShortcut);
    connect(deleteKey, &QShortcut::activated, this, [this] { controller_.remove(); });
}

QLayout* TWFilesSheet::createRuleButtons()
{
    addButton_ = smallButton("+", "addToolButton", tr("Add a rule"));
    removeButton_ = smallButton(QString(QChar(0x2212)), "removeToolButton", tr("Remove the selected rule"));
    addMenu_ = new QMenu(this);
    addMenu_->setObjectName("addMenu");
    addMenu_->setAccessibleName(tr("Add a rule"));
    connect(addMenu_->addAction(tr("Choose a &File...")), &QAction::triggered, this,
        [this] { openChooser(QFileDialog::ExistingFile); });
    connect(addMenu_->addAction(tr("Choose a Fol&der...")), &QAction::triggered, this,
        [this] { openChooser(QFileDialog::Directory); });
    // Queued: a menu hides before it says what was chosen.
    connect(addMenu_, &QMenu::aboutToHide, this, [this] {
        QTimer::singleShot(0, this, [this] {
            if (!chooser_)
                answerPath(std::nullopt);
        });
    });
    connect(addButton_, &QToolButton::clicked, this, [this] {
        finishEditing();
        controller_.add();
    });
    connect(removeButton_, &QToolButton::clicked, this, [this] {
        finishEditing();
        controller_.remove();
    });
    noteLabel_ = new QLabel;
    noteLabel_->setObjectName("noteLabel");
    noteLabel_->setTextFormat(Qt::PlainText);
    noteLabel_->setWordWrap(true);
    // Two lines, so that nothing moves when the selection does.
    noteLabel_->setFixedHeight(2 * fontMetrics().lineSpacing());
    auto* layout = new QHBoxLayout;
    layout->addWidget(addButton_);
    layout->addWidget(removeButton_);
    layout->addWidget(noteLabel_, 1);
    return layout;
}

QWidget* TWFilesSheet::createSheetButtons()
{
    auto* box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Help);
    auto* ok = box->button(QDialogButtonBox::Ok);
    ok->setObjectName("okPushButton");
    ok->setAccessibleName(tr("OK"));
    ok->setDefault(true);
    auto* help = box->button(QDialogButtonBox::Help);
    help->setObjectName("helpPushButton");
    help->setAccessibleName(tr("Help"));
    auto* defaults = box->addButton(tr("&Restore Defaults..."), QDialogButtonBox::ResetRole);
    defaults->setObjectName("restoreDefaultsPushButton");
    defaults->setAccessibleName(tr("Restore Defaults"));
    connect(ok, &QPushButton::clicked, this, [this] {
        finishEditing();
        controller_.ok();
    });
    connect(help, &QPushButton::clicked, this, [this] { controller_.help(); });
    connect(defaults, &QPushButton::clicked, this, [this] {
        finishEditing();
        controller_.restoreDefaults();
    });
    return box;
}

void TWFilesSheet::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (event->spontaneous())
        return;
    showMessage({});
    controller_.sheetOpened();
}

void TWFilesSheet::hideEvent(QHideEvent* event)
{
    QDialog::hideEvent(event);
    if (!event->spontaneous())
        controller_.sheetClosed();
}

void TWFilesSheet::closeSheet()
{
    accept();
}

void TWFilesSheet::openHelpAnchor(const std::string& anchor)
{
    helpWindow_.openAnchor(anchor);
}

// The place in the list stays: after a removal the next rule is the current one.
void TWFilesSheet::reloadTable()
{
    const int row = std::min(table_->currentIndex().row(), model_->rowCount() - 1);
    const int scrolled = table_->verticalScrollBar()->value();
    model_->reload();
    if (row >= 0)
        table_->setCurrentIndex(model_->index(row, TWFilesTableModel::Name));
    table_->verticalScrollBar()->setValue(scrolled);
    showSelection();
}

void TWFilesSheet::notesChanged()
{
    const int left = table_->columnViewportPosition(TWFilesTableModel::Note);
    table_->viewport()->update(left, 0, table_->columnWidth(TWFilesTableModel::Note), table_->viewport()->height());
    showSelection();
}

int TWFilesSheet::selectedRow() const
{
    const auto rows = table_->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void TWFilesSheet::selectRow(int row)
{
    const auto index = model_->index(row, TWFilesTableModel::Name);
    table_->setCurrentIndex(index);
    table_->scrollTo(index);
}

// Taking the focus from a cell's editor makes it write what was typed.
void TWFilesSheet::finishEditing()
{
    if (table_->isAncestorOf(focusWidget()))
        table_->setFocus();
}

// The note stands below the table once more, in full and without a mouse.
void TWFilesSheet::showSelection()
{
    const int row = selectedRow();
    removeButton_->setEnabled(row != -1);
    noteLabel_->setText(
        row == -1 ? QString() : model_->index(row, TWFilesTableModel::Note).data(Qt::AccessibleTextRole).toString());
}

// What is wrong with the saved list is said before it, as long as it lasts.
void TWFilesSheet::showMessage(const QString& message)
{
    auto lines = QStringList{ TWQtText::shown(controller_.problem()), message };
    lines.removeAll(QString());
    messageBar_->setText(lines.join('\n'));
}

void TWFilesSheet::choosePath(
    const std::string& title, const std::string& prompt, std::function<void(std::optional<std::string>)> chosen)
{
    if (droppedPath_) {
        chosen(std::exchange(droppedPath_, std::nullopt));
        return;
    }
    chooserTitle_ = TWQtText::exact(title);
    chooserPrompt_ = TWQtText::exact(prompt);
    chosen_ = std::move(chosen);
    addMenu_->popup(addButton_->mapToGlobal(QPoint(0, addButton_->height())));
}

void TWFilesSheet::openChooser(QFileDialog::FileMode mode)
{
    showMessage({});
    // Not Qt's home, which in a sandbox is still the real one.
    const auto home = QFile::decodeName(QByteArray::fromStdString(controller_.homeFolder()));
    chooser_ = new QFileDialog(this, chooserTitle_, home);
    chooser_->setObjectName("chooserFileDialog");
    chooser_->setAttribute(Qt::WA_DeleteOnClose);
    chooser_->setFileMode(mode);
    // A link that is chosen is meant itself, never what it points to.
    chooser_->setOption(QFileDialog::DontResolveSymlinks);
    // Most traces lie in hidden folders.
    chooser_->setFilter(chooser_->filter() | QDir::Hidden | QDir::System);
    chooser_->setLabelText(QFileDialog::Accept, chooserPrompt_);
    connect(chooser_, &QFileDialog::fileSelected, this, [this](const QString& path) { answerPath(pathBytes(path)); });
    connect(chooser_, &QFileDialog::rejected, this, [this] { answerPath(std::nullopt); });
    chooser_->open();
}

void TWFilesSheet::answerPath(std::optional<std::string> path)
{
    if (const auto chosen = std::exchange(chosen_, nullptr))
        chosen(std::move(path));
}

// Qt puts a replacement character for bytes that are no UTF-8; the way back would lead to another file.
std::optional<std::string> TWFilesSheet::pathBytes(const QString& path)
{
    const auto encoded = QFile::encodeName(path);
    const bool exact = !path.contains(QChar::ReplacementCharacter) && QFile::decodeName(encoded) == path;
    if (!exact) {
        showMessage(
            tr("The name \"%1\" is not valid UTF-8, so a rule cannot hold it. Choose the folder around it instead.")
                .arg(path));
        return std::nullopt;
    }
    return TWPath::withoutTrailingSlashes(encoded.toStdString());
}

void TWFilesSheet::addDropped(const QList<QUrl>& files)
{
    finishEditing();
    showMessage({});
    for (const auto& file : files) {
        droppedPath_ = file.isLocalFile() ? pathBytes(file.toLocalFile()) : std::nullopt;
        if (!droppedPath_)
            continue;
        controller_.add();
        // Where Add makes an empty rule, nobody asked for the path.
        if (const auto path = std::exchange(droppedPath_, std::nullopt))
            model_->setData(
                model_->index(selectedRow(), TWFilesTableModel::Path), TWQtText::exact(*path), Qt::EditRole);
    }
}

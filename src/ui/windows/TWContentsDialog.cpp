#include "ui/windows/TWContentsDialog.h"

#include "support/TWPath.h"
#include "support/TWText.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWFocusFrame.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWScrollBox.h"
#include "ui/parts/TWSpinner.h"
#include "ui/parts/TWTextLabel.h"

#include <QDialogButtonBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr auto NotRead = QT_TRANSLATE_NOOP("TWContentsDialog", "The folder could not be read (%1).");
constexpr auto Empty = QT_TRANSLATE_NOOP("TWContentsDialog", "The folder is empty.");
constexpr auto More = QT_TRANSLATE_NOOP("TWContentsDialog", "%1, and %2 more that are not shown");
constexpr auto AtLeast = QT_TRANSLATE_NOOP("TWContentsDialog", "at least %1");
constexpr auto SomeUnknown = QT_TRANSLATE_NOOP(
    "TWContentsDialog", "%1. Something inside could not be read, so that some sizes are too small.");
constexpr auto Unknown = "\u2026";

enum Column { Name, Size };

constexpr QSize Preferred(520, 360); // in pixels

}

TWContentsDialog::TWContentsDialog(TWRunLoop& runLoop, const TWFileSystem& fileSystem, const TWPlaces& places,
    const std::string& realPath, QWidget* parent)
    : QDialog(parent)
    , runLoop_(runLoop)
    , fileSystem_(fileSystem)
    , places_(places)
    , first_(realPath)
    , pathLabel_(new TWTextLabel("pathLabel"))
    , entries_(new QTreeWidget)
    , sentence_(new QLabel)
    , spinner_(new TWSpinner(fontMetrics().height(), this))
{
    setObjectName("contentsDialog");
    new TWFocusFrame(this);
    TWControls::setTitle(*this, tr("Contents"), places);
    entries_->setObjectName("contentsTreeWidget");
    entries_->setAccessibleName(tr("What is in the folder"));
    entries_->setHeaderLabels({ tr("Name"), tr("Size") });
    entries_->headerItem()->setTextAlignment(Size, Qt::AlignRight | Qt::AlignVCenter);
    entries_->setRootIsDecorated(false);
    entries_->setUniformRowHeights(true);
    entries_->setTabKeyNavigation(false);
    entries_->header()->setStretchLastSection(false);
    entries_->header()->setSectionResizeMode(Name, QHeaderView::Stretch);
    connect(entries_, &QTreeWidget::itemActivated, this, &TWContentsDialog::openCurrent);
    sentence_->setObjectName("contentsLabel");
    sentence_->setWordWrap(true);

    auto* buttons = new QDialogButtonBox;
    up_ = buttons->addButton(tr("&Up"), QDialogButtonBox::ActionRole);
    up_->setObjectName("upButton");
    auto* close = buttons->addButton(QDialogButtonBox::Close);
    for (auto* button : { up_, close }) {
        button->setAutoDefault(false);
        button->setAccessibleName(QString(button->text()).remove('&'));
    }
    connect(up_, &QPushButton::clicked, this, &TWContentsDialog::up);
    for (const auto& key : { QKeySequence(Qt::ALT | Qt::Key_Up), QKeySequence(Qt::Key_Backspace) })
        connect(new QShortcut(key, this), &QShortcut::activated, up_, &QPushButton::click);
    connect(close, &QPushButton::clicked, this, &QDialog::reject);
    auto* footer = new QHBoxLayout;
    footer->addWidget(sentence_, 1);
    footer->addWidget(spinner_);
    footer->addWidget(buttons);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(pathLabel_);
    layout->addWidget(entries_, 1);
    layout->addLayout(footer);
    resize(TWFitToScreen(*this, Preferred));
    list(realPath);
    entries_->setFocus();
}

void TWContentsDialog::list(const std::string& path)
{
    path_ = path;
    pathLabel_->setWholeText(TWQtText::shown(places_.abbreviate(path)));
    up_->setEnabled(path_ != first_);
    entries_->clear();
    spinner_->start();
    listing_ = std::make_unique<TWFolderListing>(runLoop_, fileSystem_, path, [this] { showEntries(); });
}

void TWContentsDialog::showEntries()
{
    const auto& found = listing_->entries();
    bool unknown = false;
    for (std::size_t index = 0; index < found.size(); ++index) {
        auto* line = entries_->topLevelItem(static_cast<int>(index));
        if (!line) {
            const bool folder = found[index].look.isFolder();
            line = new QTreeWidgetItem(entries_, { TWQtText::shown(found[index].name) });
            line->setToolTip(Name, TWQtText::toolTip(found[index].name));
            line->setIcon(Name, style()->standardIcon(folder ? QStyle::SP_DirIcon : QStyle::SP_FileIcon));
            line->setTextAlignment(Size, Qt::AlignRight | Qt::AlignVCenter);
        }
        const auto& bytes = found[index].bytes;
        const auto size = bytes ? TWQtText::exact(TWText::size(*bytes)) : QString(Unknown);
        line->setText(Size, found[index].tooSmall ? tr(AtLeast).arg(size) : size);
        unknown = unknown || found[index].tooSmall;
    }
    if (!entries_->currentItem())
        entries_->setCurrentItem(entries_->topLevelItem(0));
    if (listing_->ended())
        spinner_->stop();
    const auto count = TWQtText::exact(TWText::count(found.size(), "item", "items"));
    if (listing_->error() != 0)
        sentence_->setText(tr(NotRead).arg(TWQtText::exact(TWErrorText(listing_->error()))));
    else if (listing_->left() != 0)
        sentence_->setText(tr(More).arg(count, TWQtText::exact(TWText::number(listing_->left()))));
    else if (unknown)
        sentence_->setText(tr(SomeUnknown).arg(count));
    else
        sentence_->setText(found.empty() && listing_->ended() ? tr(Empty) : count);
}

void TWContentsDialog::openCurrent()
{
    const int index = entries_->indexOfTopLevelItem(entries_->currentItem());
    if (index < 0)
        return;
    const auto& entry = listing_->entries()[static_cast<std::size_t>(index)];
    if (entry.look.isFolder())
        list(TWPath::join(path_, entry.name));
}

void TWContentsDialog::up()
{
    list(std::string(TWPath::parent(path_)));
    entries_->setFocus();
}

void TWContentsDialog::keyPressEvent(QKeyEvent* event)
{
    if (!TWControls::pressFocused(*this, *event))
        QDialog::keyPressEvent(event);
}

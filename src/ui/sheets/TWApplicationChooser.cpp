#include "ui/sheets/TWApplicationChooser.h"

#include "platform/TWPlaces.h"
#include "ui/parts/TWApplicationList.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWPathChooser.h"
#include "ui/parts/TWQtText.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// The preferred size, in characters and lines of text.
constexpr int ChooserWidth = 70;
constexpr int ChooserHeight = 30;

}

TWApplicationChooser::TWApplicationChooser(TWApplicationFinder& finder, const TWPlaces& places, const Texts& texts,
    Number number, std::function<void(std::vector<TWApplication>)> answered, QWidget* parent)
    : TWSheet("applicationChooser", {}, parent)
    , finder_(finder)
    , places_(places)
    , chooser_(new TWPathChooser(this))
    , searchField_(new QLineEdit)
    , list_(new TWApplicationList(
          number == Number::One ? QAbstractItemView::SingleSelection : QAbstractItemView::ExtendedSelection))
{
    setAttribute(Qt::WA_DeleteOnClose);
    TWControls::setTitle(*this, texts.title, places);
    setPreferredSize(ChooserWidth, ChooserHeight);
    setIntroduction(texts.message);
    setContent(createContent(), searchField_);
    createButtons(texts.prompt);
    connect(this, &QDialog::finished, this, [this, answered = std::move(answered)] { answered(chosen_); });
    connect(chooser_, &TWPathChooser::unreadableName, this, [this](const QString& path) {
        showMessage(tr("The name \"%1\" is not valid UTF-8, so this file cannot be chosen.").arg(path));
    });
    findApplications();
}

QWidget* TWApplicationChooser::createContent()
{
    searchField_->setObjectName("searchField");
    searchField_->setAccessibleName(tr("Search"));
    searchField_->setPlaceholderText(tr("Search"));
    searchField_->setClearButtonEnabled(true);
    searchField_->installEventFilter(this);
    connect(searchField_, &QLineEdit::textChanged, this, &TWApplicationChooser::search);
    list_->setObjectName("applicationListView");
    list_->setAccessibleName(tr("Applications"));
    connect(list_, &TWApplicationList::selectedChanged, this,
        [this] { chooseButton_->setEnabled(!list_->selected().empty()); });
    connect(list_, &QAbstractItemView::doubleClicked, this, [this] { chooseButton_->click(); });
    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(searchField_);
    layout->addWidget(list_, 1);
    return content;
}

void TWApplicationChooser::createButtons(const QString& prompt)
{
    chooseButton_ = addButton(prompt, QDialogButtonBox::AcceptRole, "chooseButton");
    chooseButton_->setAccessibleName(prompt);
    chooseButton_->setEnabled(false);
    setDefaultButton(chooseButton_);
    auto* cancel = addButton(QDialogButtonBox::Cancel, "cancelPushButton", tr("Cancel"));
    auto* other = addButton(tr("&Other..."), QDialogButtonBox::ActionRole, "otherButton");
    other->setAccessibleName(tr("Other"));
    other->setToolTip(tr("Choose an application that is not in the list by its .desktop file or its program"));
    connect(chooseButton_, &QPushButton::clicked, this, [this] { choose(list_->selected()); });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(other, &QPushButton::clicked, this, &TWApplicationChooser::chooseOther);
}

void TWApplicationChooser::findApplications()
{
    list_->setEmptyText(tr("Looking for applications..."));
    finder_.find([chooser = QPointer(this)](std::vector<TWApplication> found) {
        if (!chooser)
            return;
        chooser->list_->setApplications(std::move(found));
        chooser->search();
    });
}

void TWApplicationChooser::search()
{
    if (!list_->hasApplications())
        return;
    const auto text = searchField_->text().trimmed();
    list_->setEmptyText(text.isEmpty() ? tr("No applications were found. Press Other to choose one by its file.")
                                       : tr("No application's name contains \"%1\".\nPress Other to choose one by its "
                                            "file.")
                                             .arg(text));
    list_->search(text);
}

void TWApplicationChooser::chooseOther()
{
    showMessage({});
    const auto opened = [chooser = QPointer(this)](const std::vector<TWApplicationFinder::Opened>& all) {
        const auto& [application, problem] = all.front();
        if (chooser && application)
            chooser->choose({ *application });
        else if (chooser)
            chooser->showMessage(TWQtText::shown(problem));
    };
    const TWPathChooser::Texts texts{ tr("Select a .desktop file or a program"), chooseButton_->text() };
    chooser_->chooseFile(texts, places_.home, [this, opened](const std::optional<std::string>& path) {
        if (path)
            finder_.open({ *path }, opened);
    });
}

void TWApplicationChooser::choose(std::vector<TWApplication> applications)
{
    chosen_ = std::move(applications);
    accept();
}

bool TWApplicationChooser::eventFilter(QObject* object, QEvent* event)
{
    if (object == searchField_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Up || key == Qt::Key_PageDown || key == Qt::Key_PageUp)
            return QCoreApplication::sendEvent(list_, event);
    }
    return TWSheet::eventFilter(object, event);
}

#include "ui/parts/TWPathChooser.h"

#include "support/TWPath.h"
#include "ui/parts/TWQtText.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>

namespace {

// Qt's own dialog, because those of some desktops do not show hidden folders, where most traces are, and resolve
// symbolic links.
class Dialog final : public QFileDialog {
public:
    Dialog(QWidget* window, const QString& title, const QString& folder)
        : QFileDialog(window, title, folder)
        , startFolder_(directory())
    {
        setObjectName("chooserFileDialog");
        setAttribute(Qt::WA_DeleteOnClose);
        setOption(DontUseNativeDialog);
        setOption(DontResolveSymlinks);
        setFilter(filter() | QDir::Hidden | QDir::System);
    }

protected:
    // For Qt an empty field means the folder that is shown. If that is still the folder where the dialog opened, the
    // user has not chosen anything.
    void accept() override
    {
        const auto* name = findChild<QLineEdit*>("fileNameEdit");
        if (name && name->text().isEmpty() && directory() == startFolder_)
            return;
        QFileDialog::accept();
    }

private:
    const QDir startFolder_;
};

}

TWPathChooser::TWPathChooser(QWidget* window)
    : QObject(window)
    , window_(window)
    , menu_(new QMenu(window))
{
    menu_->setObjectName("chooserMenu");
    addEntry(tr("Choose a &File..."), [this] { openDialog(QFileDialog::ExistingFile); });
    addEntry(tr("Choose a Fol&der..."), [this] { openDialog(QFileDialog::Directory); });
    // Queued, because a menu hides before it reports which entry was chosen.
    connect(
        menu_, &QMenu::aboutToHide, this,
        [this] {
            if (!dialog_)
                answer(std::nullopt);
        },
        Qt::QueuedConnection);
}

void TWPathChooser::addEntry(const QString& title, std::function<void()> chosen)
{
    connect(menu_->addAction(title), &QAction::triggered, this, std::move(chosen));
}

void TWPathChooser::choose(const QWidget& button, const Texts& texts, const std::string& startFolder,
    std::function<void(std::optional<std::string>)> chosen)
{
    texts_ = texts;
    startFolder_ = startFolder;
    chosen_ = std::move(chosen);
    menu_->setAccessibleName(texts.title);
    menu_->popup(button.mapToGlobal(QPoint(0, button.height())));
}

void TWPathChooser::chooseFile(
    const Texts& texts, const std::string& startFolder, std::function<void(std::optional<std::string>)> chosen)
{
    texts_ = texts;
    startFolder_ = startFolder;
    chosen_ = std::move(chosen);
    openDialog(QFileDialog::ExistingFile);
}

void TWPathChooser::openDialog(int fileMode)
{
    // The window's title names the sandbox, if there is one.
    dialog_ = new Dialog(window_, window_->windowTitle() + ": " + texts_.title, TWQtText::path(startFolder_));
    dialog_->setFileMode(static_cast<QFileDialog::FileMode>(fileMode));
    dialog_->setLabelText(QFileDialog::Accept, texts_.button);
    connect(dialog_, &QFileDialog::fileSelected, this, [this](const QString& path) {
        const auto bytes = TWQtText::pathBytes(path);
        if (!bytes)
            emit unreadableName(path);
        answer(bytes ? std::optional(TWPath::withoutTrailingSlashes(*bytes)) : std::nullopt);
    });
    connect(dialog_, &QDialog::finished, this, [this] {
        dialog_ = nullptr;
        answer(std::nullopt); // if nothing was chosen
    });
    dialog_->open();
}

void TWPathChooser::answer(std::optional<std::string> path)
{
    if (const auto chosen = std::exchange(chosen_, nullptr))
        chosen(std::move(path));
}

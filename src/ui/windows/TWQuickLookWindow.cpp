#include "ui/windows/TWQuickLookWindow.h"

#include "support/TWPath.h"
#include "support/TWText.h"
#include "ui/parts/TWControls.h"
#include "ui/parts/TWMessageBar.h"
#include "ui/parts/TWPictureDecoder.h"
#include "ui/parts/TWPictureView.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWQuietLabel.h"
#include "ui/parts/TWScrollBox.h"
#include "ui/parts/TWSpinner.h"
#include "ui/parts/TWTextLabel.h"

#include <QCoreApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScreen>
#include <QShortcut>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

using Kind = TWFileSample::Kind;

namespace {

// By kind.
constexpr const char* KindNames[] = {
    nullptr, // gone
    nullptr, // unreadable
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "Folder"),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "Symbolic link"),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "Pipe, socket or device"),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "Empty file"),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "Text"),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "Binary data"),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "Picture"),
};

// By kind; "%1" is the reason or the target.
constexpr const char* Messages[] = {
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "There is nothing any more at this path."),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "It cannot be read (%1)."),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "This is a folder."),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "This is a symbolic link to \"%1\". It is not followed."),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "This is not a file but a pipe, a socket or a device. It is not opened."),
    QT_TRANSLATE_NOOP("TWQuickLookWindow", "The file is empty."),
};

constexpr auto CompressedKind = QT_TRANSLATE_NOOP("TWQuickLookWindow", "%1 (%2)");
constexpr auto PictureSize = QT_TRANSLATE_NOOP("TWQuickLookWindow", "%1 x %2 pixels");

// The preferred size, in characters and lines of text. A line of bytes has 79 characters.
constexpr int WindowWidth = 92;
constexpr int WindowHeight = 36;

// What is added to a text in one turn.
constexpr int LongestPiece = 8 * 1024; // in characters
constexpr int MostLinesInPiece = 500;

constexpr double NameScale = 1.2;

// Splits a text after lines.
QStringList piecesOf(const QString& text)
{
    QStringList pieces;
    for (qsizetype begin = 0, end = 0; end < text.size(); begin = end) {
        for (int lines = 0; lines < MostLinesInPiece && end < text.size() && end - begin < LongestPiece; ++lines) {
            const auto line = text.indexOf('\n', end);
            end = line == -1 ? text.size() : line + 1;
        }
        pieces.append(text.mid(begin, end - begin));
    }
    return pieces;
}

}

TWQuickLookWindow::TWQuickLookWindow(
    TWRunLoop& runLoop, const TWFileSystem& fileSystem, const TWPlaces& places, QWidget& opener)
    : QWidget(&opener, Qt::Dialog)
    , runLoop_(runLoop)
    , fileSystem_(fileSystem)
    , places_(places)
    , opener_(opener)
{
    setObjectName("quickLookWindow");
    setAccessibleName(tr("Preview"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    // Has the keys first, if it is activated, and takes no part in the tab order.
    setFocusPolicy(Qt::ClickFocus);
    new QVBoxLayout(this);
    createHeader();
    createPages();
    createFindBar();
    createShortcuts();
    connect(&appending_, &QTimer::timeout, this, &TWQuickLookWindow::appendPiece);
    opener_.installEventFilter(this);
    setFocus();
}

void TWQuickLookWindow::createHeader()
{
    name_ = new TWTextLabel("nameLabel");
    auto large = name_->font();
    large.setBold(true);
    large.setPixelSize(qRound(QFontInfo(large).pixelSize() * NameScale));
    name_->setFont(large);
    path_ = new TWQuietLabel(nullptr);
    path_->setObjectName("pathLabel");
    facts_ = new TWQuietLabel(nullptr);
    facts_->setObjectName("factsLabel");
    spinner_ = new TWSpinner(fontMetrics().height(), this);
    notice_ = new TWMessageBar(TWMessageBar::Kind::Notice, "noticeBar");
    auto* top = new QHBoxLayout;
    top->addWidget(name_, 1);
    top->addWidget(spinner_);
    auto* column = static_cast<QVBoxLayout*>(layout());
    column->addLayout(top);
    for (QWidget* each :
        { static_cast<QWidget*>(path_), static_cast<QWidget*>(facts_), static_cast<QWidget*>(notice_) })
        column->addWidget(each);
}

void TWQuickLookWindow::createPages()
{
    text_ = new QPlainTextEdit;
    text_->setObjectName("contentsPlainTextEdit");
    text_->setAccessibleName(tr("Contents"));
    text_->setReadOnly(true);
    text_->setUndoRedoEnabled(false);
    text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    text_->setTabChangesFocus(true);
    text_->setLayoutDirection(Qt::LeftToRight); // as paths are
    text_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    picture_ = new TWPictureView;
    picture_->setObjectName("pictureView");
    message_ = new QLabel;
    message_->setObjectName("messageLabel");
    message_->setTextFormat(Qt::PlainText);
    message_->setAlignment(Qt::AlignCenter);
    message_->setWordWrap(true);
    pages_ = new QStackedWidget;
    pages_->addWidget(text_);
    pages_->addWidget(picture_);
    pages_->addWidget(message_);
    static_cast<QVBoxLayout*>(layout())->addWidget(pages_, 1);
}

void TWQuickLookWindow::createFindBar()
{
    findField_ = new QLineEdit;
    findField_->setObjectName("findField");
    findField_->setAccessibleName(tr("Find"));
    findField_->setPlaceholderText(tr("Find"));
    findField_->setClearButtonEnabled(true);
    notFound_ = new QLabel(tr("Not found"));
    notFound_->setObjectName("notFoundLabel");
    findBar_ = new QWidget;
    auto* bar = new QHBoxLayout(findBar_);
    bar->setContentsMargins(0, 0, 0, 0);
    bar->addWidget(findField_, 1);
    bar->addWidget(notFound_);
    findBar_->hide();
    layout()->addWidget(findBar_);
    connect(findField_, &QLineEdit::returnPressed, this, [this] { find(false); });
    connect(findField_, &QLineEdit::textChanged, notFound_, &QLabel::hide);
}

// Space stays with the field for finding while that has the focus, because Qt asks the field first.
void TWQuickLookWindow::createShortcuts()
{
    const auto add = [this](const QKeySequence& key, auto call) {
        connect(new QShortcut(key, this), &QShortcut::activated, this, call);
    };
    add(Qt::Key_Space, [this] { close(); });
    add(Qt::Key_Escape, [this] { endFindingOrClose(); });
    add(QKeySequence::Close, [this] { close(); });
    add(QKeySequence::Find, [this] { openFindBar(); });
    add(QKeySequence::FindNext, [this] { find(false); });
    add(QKeySequence::FindPrevious, [this] { find(true); });
    // In a text, these keys would stay in the line.
    const auto addToText = [this](int key, QTextCursor::MoveOperation move) {
        auto* shortcut = new QShortcut(key, text_, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, [this, move] { text_->moveCursor(move); });
    };
    addToText(Qt::Key_Home, QTextCursor::Start);
    addToText(Qt::Key_End, QTextCursor::End);
}

// So that the opener can be seen, as far as the screen has room.
void TWQuickLookWindow::placeBesideOpener()
{
    ensurePolished();
    const QSize wanted(
        WindowWidth * QFontMetrics(text_->font()).averageCharWidth(), WindowHeight * fontMetrics().lineSpacing());
    resize(TWFitToScreen(*this, wanted));
    const auto screen = opener_.screen()->availableGeometry();
    const auto opener = opener_.window()->frameGeometry();
    const bool right = screen.right() - opener.right() >= opener.left() - screen.left();
    const int x = right ? opener.right() + 1 : opener.left() - width();
    move(std::clamp(x, screen.left(), std::max(screen.left(), screen.right() - width())),
        std::clamp(opener.top(), screen.top(), std::max(screen.top(), screen.bottom() - height())));
}

void TWQuickLookWindow::showFile(const std::string& path)
{
    const auto name = TWPath::lastComponent(path);
    TWControls::setTitle(*this, TWQtText::titlePart(name), places_);
    name_->setWholeText(TWQtText::shown(name));
    path_->setText(TWQtText::shown(places_.abbreviate(path)));
    clear();
    spinner_->start();
    reading_ = std::make_unique<TWBackgroundStream<Content>>(
        runLoop_, 1,
        [&fileSystem = fileSystem_, path](auto& sink) { sink.put(read(fileSystem, path, sink.cancellation())); },
        [this](const Content& content) { showContent(content); }, [] {});
    if (isVisible())
        return;
    placeBesideOpener();
    show();
}

// Called on another thread.
TWQuickLookWindow::Content TWQuickLookWindow::read(
    const TWFileSystem& fileSystem, const std::string& path, const TWCancellation& cancellation)
{
    Content content;
    const auto takePicture = [&](const std::string& bytes) {
        content.picture = TWPictureDecoder::decode(bytes, cancellation, content.pictureSize);
        return !content.picture.isNull();
    };
    content.sample = TWFileSampler::sample(fileSystem, path, takePicture, cancellation);
    content.pieces = piecesOf(TWQtText::exact(content.sample.text));
    return content;
}

// Forgets the text at once, because the next file must not seem to hold it.
void TWQuickLookWindow::clear()
{
    reading_.reset();
    appending_.stop();
    pieces_.clear();
    facts_->setText({});
    notice_->setText({});
    text_->clear();
    picture_->setPicture({});
    message_->clear();
    findBar_->hide();
}

void TWQuickLookWindow::showContent(const Content& content)
{
    const auto& sample = content.sample;
    const auto number = static_cast<std::size_t>(sample.kind);
    facts_->setText(factsOf(content));
    notice_->setText(TWQtText::shown(sample.notice));
    pieces_ = content.pieces;
    if (sample.kind == Kind::Text || sample.kind == Kind::Binary) {
        // The columns of bytes must stay below each other.
        text_->setLineWrapMode(sample.kind == Kind::Text ? QPlainTextEdit::WidgetWidth : QPlainTextEdit::NoWrap);
        pages_->setCurrentWidget(text_);
        appendPiece();
        text_->moveCursor(QTextCursor::Start); // from the end of the first piece
        appending_.start(0);
        return;
    }
    spinner_->stop();
    if (sample.kind == Kind::Picture) {
        picture_->setPicture(content.picture);
        picture_->setAccessibleName(factsOf(content));
        pages_->setCurrentWidget(picture_);
        return;
    }
    const auto value = sample.kind == Kind::Link ? sample.text : TWErrorText(sample.error);
    const auto message = tr(Messages[number]);
    message_->setText(message.contains("%1") ? message.arg(TWQtText::shown(value)) : message);
    pages_->setCurrentWidget(message_);
}

// One piece a turn, because a long text takes longer than a turn may.
void TWQuickLookWindow::appendPiece()
{
    if (pieces_.isEmpty()) {
        appending_.stop();
        spinner_->stop();
        return;
    }
    QTextCursor cursor(text_->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(pieces_.takeFirst());
}

QString TWQuickLookWindow::factsOf(const Content& content)
{
    const auto& sample = content.sample;
    const auto* kind = KindNames[static_cast<std::size_t>(sample.kind)];
    if (!kind)
        return {};
    const auto name = tr(kind);
    QStringList facts{ sample.compression.empty() ? name
                                                  : tr(CompressedKind).arg(name, TWQtText::exact(sample.compression)) };
    if (sample.kind == Kind::Picture)
        facts.append(tr(PictureSize).arg(content.pictureSize.width()).arg(content.pictureSize.height()));
    if (sample.facts.kind == TWFileKind::File)
        facts.append(TWQtText::exact(TWText::size(sample.facts.size)));
    const auto time = static_cast<std::time_t>(sample.facts.modified / 1'000'000'000);
    facts.append(TWQtText::exact(TWText::localTime(time, "%Y-%m-%d %H:%M")));
    return facts.join(", ");
}

void TWQuickLookWindow::openFindBar()
{
    if (pages_->currentWidget() != text_)
        return;
    notFound_->hide();
    findBar_->show();
    findField_->setFocus();
    findField_->selectAll();
}

// Begins anew at the other end.
void TWQuickLookWindow::find(bool backward)
{
    const auto words = findField_->text();
    if (!findBar_->isVisible() || words.isEmpty())
        return;
    const auto flags = backward ? QTextDocument::FindBackward : QTextDocument::FindFlags();
    bool found = text_->find(words, flags);
    if (!found) {
        const auto before = text_->textCursor();
        text_->moveCursor(backward ? QTextCursor::End : QTextCursor::Start);
        found = text_->find(words, flags);
        if (!found)
            text_->setTextCursor(before);
    }
    notFound_->setVisible(!found);
}

void TWQuickLookWindow::endFindingOrClose()
{
    if (!findBar_->isVisible()) {
        close();
        return;
    }
    findBar_->hide();
    text_->setFocus();
}

// While the opener has the keys, Escape closes the preview and not the opener's window.
bool TWQuickLookWindow::eventFilter(QObject* object, QEvent* event)
{
    if (object != &opener_ || !isVisible())
        return QWidget::eventFilter(object, event);
    if (event->type() == QEvent::Hide)
        close();
    if (event->type() != QEvent::KeyPress || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape)
        return QWidget::eventFilter(object, event);
    close();
    return true;
}

void TWQuickLookWindow::keyPressEvent(QKeyEvent* event)
{
    QWidget::keyPressEvent(event);
    if (text_->hasFocus() || findField_->hasFocus())
        return;
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_Left:
    case Qt::Key_Right:
        QCoreApplication::sendEvent(&opener_, event);
        break;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        QCoreApplication::sendEvent(text_, event);
        break;
    default:
        break;
    }
}

// Gives the keys back only if it had them, because closing must not bring Tidewell in front of another program.
void TWQuickLookWindow::closeEvent(QCloseEvent* event)
{
    if (isActiveWindow() && opener_.isVisible()) {
        opener_.window()->activateWindow();
        opener_.setFocus();
    }
    clear();
    setFocus(); // for the next time
    QWidget::closeEvent(event);
}

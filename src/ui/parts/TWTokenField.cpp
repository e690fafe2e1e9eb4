#include "ui/parts/TWTokenField.h"

#include "ui/parts/TWQtText.h"
#include "ui/parts/TWTypedWords.h"

#include <QClipboard>
#include <QEvent>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>

namespace {

constexpr int Gap = 5;
constexpr int Padding = 9; // on either side of a token's text, in pixels
constexpr int NarrowestInput = 180;
constexpr int FewestLines = 3;
constexpr float TokenTint = 0.22F;
constexpr qsizetype MostSpoken = 20; // words
constexpr float EmptyOpacity = 0.72F;

QString shown(const QString& word)
{
    return word.isEmpty() ? TWTokenField::tr("(empty)") : TWQtText::shown(TWQtText::bytes(word));
}

QColor mixed(const QColor& background, const QColor& tint, float share)
{
    return QColor::fromRgbF(background.redF() * (1 - share) + tint.redF() * share,
        background.greenF() * (1 - share) + tint.greenF() * share,
        background.blueF() * (1 - share) + tint.blueF() * share);
}

}

TWTokenField::TWTokenField(QWidget* parent)
    : QAbstractScrollArea(parent)
    , input_(new QLineEdit(viewport()))
{
    setObjectName("tokenField");
    setAccessibleName(tr("Words"));
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    setFocusProxy(input_);
    viewport()->setBackgroundRole(QPalette::Base);
    viewport()->setAutoFillBackground(true);
    viewport()->setCursor(Qt::IBeamCursor);
    input_->setObjectName("wordLineEdit");
    input_->setAccessibleName(tr("New word"));
    input_->setFrame(false);
    input_->installEventFilter(this);
    // The user may paste many words at once.
    input_->setMaxLength(std::numeric_limits<int>::max());
    connect(input_, &QLineEdit::textChanged, this, &TWTokenField::arrange);
    connect(input_, &QLineEdit::textEdited, this, [this](const QString& typed) {
        splitTyped(typed);
        if (current_ == None)
            reveal(layout_.box(editing_ == None ? count() : editing_));
    });
    measure();
}

void TWTokenField::setWords(const QStringList& words)
{
    if (words == words_)
        return;
    backToInput();
    editing_ = placeOfEdited(words);
    words_ = words;
    measure();
}

// Returns the index of the edited token in another list of words. Among equal words it keeps its rank.
int TWTokenField::placeOfEdited(const QStringList& words) const
{
    if (editing_ == None)
        return None;
    const auto& edited = words_[editing_];
    auto before = words_.mid(0, editing_).count(edited);
    for (int place = 0; place < words.size(); ++place) {
        if (words[place] == edited && before-- == 0)
            return place;
    }
    return None;
}

void TWTokenField::replaceWords(const TWPlacedWords& oldWords, const TWPlacedWords& newWords)
{
    auto words = words_;
    for (auto left = oldWords.size(); left > 0; --left) {
        const auto& each = oldWords[left - 1];
        const bool inPlace = each.place < words.size() && words[each.place] == each.word;
        if (const auto place = inPlace ? each.place : words.indexOf(each.word); place != None)
            words.removeAt(place);
    }
    for (const auto& each : newWords)
        words.insert(std::min<qsizetype>(each.place, words.size()), each.word);
    setWords(words);
    emit wordsEdited();
    if (editing_ != None || newWords.empty())
        return;
    choose(std::min(newWords.front().place, count() - 1));
    for (const auto& each : newWords)
        selected_.insert(std::min(each.place, count() - 1));
    updateDescription();
}

void TWTokenField::finishTyping()
{
    if (editing_ == None && input_->text().isEmpty())
        return;
    // A word from a file may hold a comma, so an unchanged word is not split.
    if (editing_ != None && input_->text() == words_[editing_]) {
        leaveEdited();
        return;
    }
    auto words = TWTypedWords(input_->text(), afterComma_ && editing_ == None).words;
    // A token that the user has cleared becomes an empty word.
    if (words.isEmpty())
        words.append(QString());
    afterComma_ = false;
    insertTyped(words);
}

void TWTokenField::discardTyping()
{
    editing_ = None;
    afterComma_ = false;
    clearInput();
    backToInput();
    arrange(); // clearing an empty input sends no signal
}

// Unlike clear(), this also clears the undo history, so that Ctrl+Z does not bring back a word that was ended long ago.
void TWTokenField::clearInput()
{
    input_->setText({});
}

// The token keeps its old text and is selected.
void TWTokenField::leaveEdited()
{
    const int token = editing_;
    discardTyping();
    choose(token);
}

// A typed comma ends a word. A pasted text ends all the words it holds, including the last one. A token being edited is
// split only on Return.
void TWTokenField::splitTyped(const QString& typed)
{
    if (editing_ != None || !TWTypedWords::hasSeparator(typed))
        return;
    const TWTypedWords cut(typed, afterComma_);
    insertTyped(cut.words);
    afterComma_ = cut.endsWithComma;
}

// Splits the text before the line edit gets it, because the line edit lays out long texts slowly.
bool TWTokenField::paste()
{
    const auto pasted = QGuiApplication::clipboard()->text();
    if (editing_ != None || !TWTypedWords::hasSeparator(pasted))
        return false;
    auto text = input_->text();
    const int begin = input_->hasSelectedText() ? input_->selectionStart() : input_->cursorPosition();
    splitTyped(text.replace(begin, input_->selectedText().size(), pasted));
    return true;
}

void TWTokenField::insertTyped(const QStringList& words)
{
    const int edited = std::exchange(editing_, None);
    clearInput();
    const int place = edited == None ? count() : edited;
    std::vector<int> widths;
    for (const auto& word : words)
        widths.push_back(widthOf(word));
    QString editedWord;
    if (edited != None) {
        editedWord = words_.takeAt(place);
        widths_.erase(widths_.begin() + place);
    }
    TWPlacedWords removed;
    if (edited != None)
        removed.push_back({ place, editedWord });
    TWPlacedWords inserted;
    for (const auto& word : words)
        inserted.push_back({ place + static_cast<int>(inserted.size()), word });
    words_ = words_.mid(0, place) + words + words_.mid(place);
    widths_.insert(widths_.begin() + place, widths.begin(), widths.end());
    wordsChanged();
    if (edited == None)
        reveal(layout_.box(count()));
    else
        choose(place + static_cast<int>(words.size()) - 1);
    emit wordsReplaced(removed, inserted);
}

void TWTokenField::removeSelected()
{
    if (selected_.empty())
        return;
    QStringList words;
    std::vector<int> widths;
    TWPlacedWords removed;
    for (int token = 0; token < count(); ++token) {
        if (selected_.contains(token)) {
            removed.push_back({ token, words_[token] });
            continue;
        }
        words.append(words_[token]);
        widths.push_back(widths_[static_cast<std::size_t>(token)]);
    }
    const int next = *selected_.begin();
    words_ = words;
    widths_ = widths;
    wordsChanged();
    if (next < count())
        choose(next);
    else
        backToInput();
    emit wordsReplaced(removed, {});
}

// Called after an edit by the user, when the tokens' indexes have changed.
void TWTokenField::wordsChanged()
{
    selected_.clear();
    current_ = anchor_ = None;
    arrange();
    emit wordsEdited();
}

void TWTokenField::beginEditing(int token)
{
    finishTyping();
    backToInput();
    editing_ = token;
    input_->setText(words_[token]);
    input_->selectAll();
    arrange();
    reveal(layout_.box(token));
}

void TWTokenField::choose(int token, Qt::KeyboardModifiers modifiers)
{
    if (modifiers & Qt::ControlModifier && selected_.contains(token)) {
        selected_.erase(token);
    } else if (modifiers & Qt::ShiftModifier && anchor_ != None) {
        selected_.clear();
        for (int each = std::min(anchor_, token); each <= std::max(anchor_, token); ++each)
            selected_.insert(each);
    } else {
        if (!(modifiers & Qt::ControlModifier))
            selected_.clear();
        selected_.insert(token);
        anchor_ = token;
    }
    current_ = token;
    // Hides the text cursor while the keys act on a token.
    input_->setReadOnly(true);
    reveal(layout_.box(token));
    updateDescription();
    viewport()->update();
}

void TWTokenField::chooseAll()
{
    choose(0);
    choose(count() - 1, Qt::ShiftModifier);
}

void TWTokenField::backToInput()
{
    selected_.clear();
    current_ = anchor_ = None;
    input_->setReadOnly(false);
    updateDescription();
    viewport()->update();
}

void TWTokenField::copySelected() const
{
    QStringList words;
    for (const int token : selected_)
        words.append(words_[token]);
    QGuiApplication::clipboard()->setText(words.join('\n'));
}

bool TWTokenField::eventFilter(QObject* object, QEvent* event)
{
    if (object == input_ && event->type() == QEvent::KeyPress) {
        auto& key = static_cast<QKeyEvent&>(*event);
        return current_ == None ? inputKey(key) : tokenKey(key);
    }
    if (object == input_ && (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut))
        viewport()->update();
    return QAbstractScrollArea::eventFilter(object, event);
}

// Returns true if the key was handled. Otherwise the line edit gets it, and then the sheet.
bool TWTokenField::inputKey(QKeyEvent& event)
{
    const bool atStart = editing_ == None && input_->cursorPosition() == 0 && !input_->hasSelectedText();
    const bool empty = editing_ == None && input_->text().isEmpty();
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // If nothing is typed, Return presses the sheet's default button.
        if (empty)
            return false;
        finishTyping();
        return true;
    case Qt::Key_Escape:
        if (editing_ == None)
            return false;
        leaveEdited();
        return true;
    case Qt::Key_Left:
    case Qt::Key_Up:
    case Qt::Key_Backspace:
        if (!atStart || count() == 0 || (event.key() == Qt::Key_Backspace && !empty))
            return false;
        choose(count() - 1);
        return true;
    default:
        return inputShortcut(event);
    }
}

bool TWTokenField::inputShortcut(const QKeyEvent& event)
{
    if (event.matches(QKeySequence::Paste))
        return paste();
    if (event.matches(QKeySequence::Undo) && !input_->isUndoAvailable()) {
        emit undoRequested();
        return true;
    }
    const bool empty = editing_ == None && input_->text().isEmpty();
    if (!empty || count() == 0 || !event.matches(QKeySequence::SelectAll))
        return false;
    chooseAll();
    return true;
}

bool TWTokenField::tokenKey(QKeyEvent& event)
{
    if (event.matches(QKeySequence::SelectAll)) {
        chooseAll();
    } else if (event.matches(QKeySequence::Copy)) {
        copySelected();
    } else if (event.matches(QKeySequence::Cut)) {
        copySelected();
        removeSelected();
    } else if (event.key() == Qt::Key_Delete || event.key() == Qt::Key_Backspace) {
        removeSelected();
    } else if (event.matches(QKeySequence::Undo)) {
        emit undoRequested();
    } else if (event.key() == Qt::Key_F2 || event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter) {
        beginEditing(current_);
    } else if (const int token = moved(event.key()); token == count()) {
        backToInput();
    } else if (token != None) {
        choose(token, event.modifiers() & Qt::ShiftModifier);
    } else {
        // Typing goes to the input after the last token.
        const bool typing = !event.text().isEmpty() && event.text()[0].isPrint();
        if (!typing && !event.matches(QKeySequence::Paste))
            return false;
        backToInput();
        return inputKey(event);
    }
    return true;
}

// Returns the token that an arrow key leads to: count() for the input after the last token, None for any other key.
int TWTokenField::moved(int key) const
{
    switch (key) {
    case Qt::Key_Left:
        return std::max(0, current_ - 1);
    case Qt::Key_Right:
        return current_ + 1;
    case Qt::Key_Up:
        return layout_.neighbour(current_, -1);
    case Qt::Key_Down:
        return layout_.neighbour(current_, 1);
    case Qt::Key_Home:
        return 0;
    case Qt::Key_End:
        return count();
    default:
        return None;
    }
}

void TWTokenField::mousePressEvent(QMouseEvent* event)
{
    input_->setFocus(Qt::MouseFocusReason);
    int token = tokenAt(event->pos());
    if (token == None && editing_ == None) {
        backToInput();
        return;
    }
    const int edited = editing_;
    const int before = count();
    finishTyping();
    // The edited token may have been split into several.
    if (edited != None && token > edited)
        token += count() - before;
    if (token != None)
        choose(token, event->modifiers());
    else
        backToInput();
}

void TWTokenField::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (const int token = tokenAt(event->pos()); token != None)
        beginEditing(token);
}

bool TWTokenField::viewportEvent(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QAbstractScrollArea::viewportEvent(event);
    const auto& help = static_cast<QHelpEvent&>(*event);
    const int token = tokenAt(help.pos());
    QToolTip::showText(help.globalPos(), token == None ? QString() : shown(words_[token]), viewport());
    return true;
}

int TWTokenField::tokenAt(const QPoint& inViewport) const
{
    const int box = layout_.boxAt(inViewport + QPoint(0, verticalScrollBar()->value()));
    return box < count() ? box : None;
}

QRect TWTokenField::tokenRect(int token) const
{
    return layout_.box(token).translated(0, -verticalScrollBar()->value());
}

int TWTokenField::widthOf(const QString& word) const
{
    return fontMetrics().horizontalAdvance(shown(word)) + 2 * Padding;
}

QSize TWTokenField::sizeHint() const
{
    return { QAbstractScrollArea::sizeHint().width(), FewestLines * boxHeight() };
}

int TWTokenField::boxHeight() const
{
    return fontMetrics().height() + 8;
}

// Called after the words or the font have changed.
void TWTokenField::measure()
{
    widths_.clear();
    widths_.reserve(words_.size());
    for (const auto& word : words_)
        widths_.push_back(widthOf(word));
    arrange();
}

void TWTokenField::arrange()
{
    auto widths = widths_;
    const int typed = std::max(NarrowestInput, widthOf(input_->text()) + Padding);
    widths.push_back(typed);
    if (editing_ != None)
        widths[static_cast<std::size_t>(editing_)] = typed;
    layout_.arrange(widths, { viewport()->width(), boxHeight(), Gap });
    verticalScrollBar()->setRange(0, std::max(0, layout_.height() - viewport()->height()));
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(boxHeight() + Gap);
    placeInput();
    updateDescription();
    viewport()->update();
}

void TWTokenField::placeInput()
{
    input_->setPlaceholderText(words_.isEmpty() ? tr("Type a word and press Return.") : QString());
    auto rect = tokenRect(editing_ == None ? count() : editing_);
    if (editing_ == None)
        rect.setRight(viewport()->width() - Gap);
    else
        rect.adjust(Padding / 2, 3, -Padding / 2, -3);
    input_->setGeometry(rect);
}

void TWTokenField::reveal(const QRect& box)
{
    auto* bar = verticalScrollBar();
    if (box.top() - Gap < bar->value())
        bar->setValue(box.top() - Gap);
    else if (box.bottom() + Gap > bar->value() + viewport()->height())
        bar->setValue(box.bottom() + Gap - viewport()->height());
}

void TWTokenField::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    arrange();
}

void TWTokenField::scrollContentsBy(int, int)
{
    placeInput();
    viewport()->update();
}

void TWTokenField::changeEvent(QEvent* event)
{
    QAbstractScrollArea::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        measure();
}

void TWTokenField::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    const int scrolled = verticalScrollBar()->value();
    painter.translate(0, -scrolled);
    const auto damaged = event->rect().translated(0, scrolled);
    for (int token = layout_.firstBelow(damaged.top()); token < count() && layout_.box(token).top() <= damaged.bottom();
         ++token) {
        if (token == editing_)
            paintFrame(painter, token);
        else
            paintToken(painter, token);
    }
}

// Paints the frame around the input while it is shown in place of a token.
void TWTokenField::paintFrame(QPainter& painter, int token) const
{
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.setBrush(palette().color(QPalette::Base));
    painter.drawRoundedRect(QRectF(layout_.box(token)).adjusted(1, 1, -1, -1), Padding, Padding);
}

// A selected token has a different background; the current one also has a heavier outline.
void TWTokenField::paintToken(QPainter& painter, int token) const
{
    const auto& box = layout_.box(token);
    const auto& colors = palette();
    const bool selected = selected_.contains(token);
    const auto highlight = colors.color(QPalette::Highlight);
    auto text = colors.color(selected ? QPalette::HighlightedText : QPalette::Text);
    const auto word = words_[token];
    QPen outline(word.isEmpty() ? colors.color(QPalette::Text) : highlight, token == current_ ? 2 : 1);
    if (word.isEmpty()) {
        outline.setStyle(Qt::DashLine);
        text.setAlphaF(selected ? 1 : EmptyOpacity);
    }
    const auto background
        = word.isEmpty() ? colors.color(QPalette::Base) : mixed(colors.color(QPalette::Base), highlight, TokenTint);
    if (token == current_)
        outline.setColor(colors.color(QPalette::Text));
    painter.setPen(outline);
    painter.setBrush(selected ? highlight : background);
    const double radius = box.height() / 2.0;
    painter.drawRoundedRect(QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setPen(text);
    const auto inner = box.adjusted(Padding, 0, -Padding, 0);
    painter.drawText(inner, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
        fontMetrics().elidedText(shown(word), Qt::ElideMiddle, inner.width() + 1));
}

// Names only the first words, because a screen reader speaks them all.
QString TWTokenField::selectionText() const
{
    QStringList words;
    for (const int token : selected_) {
        if (words.size() == MostSpoken) {
            words.append("...");
            break;
        }
        words.append(shown(words_[token]));
    }
    return tr("%1 words selected: %2").arg(QLocale().toString(selected_.size()), words.join(", "));
}

void TWTokenField::updateDescription()
{
    auto description = count() == 1 ? tr("1 word") : tr("%1 words").arg(QLocale().toString(count()));
    if (selected_.size() > 1)
        description += "; " + selectionText();
    else if (current_ != None)
        description += tr("; selected: %1").arg(shown(words_[current_]));
    if (description == accessibleDescription())
        return;
    setAccessibleDescription(description);
    input_->setAccessibleDescription(description);
}

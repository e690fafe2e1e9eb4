#pragma once

#include "ui/parts/TWTokenLayout.h"

#include <QAbstractScrollArea>
#include <QStringList>

#include <set>

class QLineEdit;

// A word and its index in the list.
struct TWPlacedWord {
    int place;
    QString word;
};
using TWPlacedWords = std::vector<TWPlacedWord>; // in ascending order

// A list of words, each shown as a token and edited as text. Comma or Return ends a word; the mouse or the arrow keys
// select tokens, a double click, F2 or Return edits one, Delete or Backspace removes the selected ones. Tokens are
// painted, not widgets, so ten thousand cost no more than those in sight. A single line edit has the keyboard focus all
// the time: after the last token or in the place of the token being edited.
class TWTokenField final : public QAbstractScrollArea {
    Q_OBJECT

public:
    explicit TWTokenField(QWidget* parent = nullptr);

    // In order, with duplicates and empty words, but without a word that is still being typed.
    const QStringList& words() const { return words_; }

    // Keeps the word being typed or edited. If the edited token is gone, its text becomes a new word.
    void setWords(const QStringList&);

    // Removes and inserts words, as to undo an edit, and selects the inserted ones. Words that are no longer at their
    // indexes are looked for. Sends only wordsEdited().
    void replaceWords(const TWPlacedWords& oldWords, const TWPlacedWords& newWords);

    // Ends the word being typed or edited.
    void finishTyping();

    // Drops the word being typed; a token being edited keeps its old text.
    void discardTyping();

    // Only a few lines high, so that in a low window the field shrinks before everything scrolls.
    QSize sizeHint() const override;

    // In the viewport's coordinates.
    QRect tokenRect(int token) const;

signals:
    // The user has changed the words. Not sent by setWords().
    void wordsEdited();

    // Sent after wordsEdited() with what the edit has replaced.
    void wordsReplaced(const TWPlacedWords& removed, const TWPlacedWords& inserted);

    // The user has pressed Ctrl+Z and there is no typing to undo.
    void undoRequested();

protected:
    bool eventFilter(QObject*, QEvent*) override;
    bool viewportEvent(QEvent*) override;
    void paintEvent(QPaintEvent*) override;
    void resizeEvent(QResizeEvent*) override;
    void scrollContentsBy(int dx, int dy) override;
    void changeEvent(QEvent*) override;
    void mousePressEvent(QMouseEvent*) override;
    void mouseDoubleClickEvent(QMouseEvent*) override;

private:
    static constexpr int None = -1;

    int count() const { return static_cast<int>(words_.size()); }
    int tokenAt(const QPoint& inViewport) const;
    int widthOf(const QString& word) const;
    int boxHeight() const;
    void measure();
    void arrange();
    void placeInput();
    void reveal(const QRect&);
    void paintToken(QPainter&, int token) const;
    void paintFrame(QPainter&, int token) const;
    QString selectionText() const;
    void updateDescription();

    void splitTyped(const QString& typed);
    bool paste();
    void insertTyped(const QStringList& words);
    void removeSelected();
    void wordsChanged();
    int placeOfEdited(const QStringList& words) const;
    void clearInput();
    void beginEditing(int token);
    void leaveEdited();

    void choose(int token, Qt::KeyboardModifiers = Qt::NoModifier);
    void chooseAll();
    void backToInput();
    void copySelected() const;
    bool inputKey(QKeyEvent&);
    bool inputShortcut(const QKeyEvent&);
    bool tokenKey(QKeyEvent&);
    int moved(int key) const;

    QStringList words_;
    std::vector<int> widths_; // width of each word's token
    TWTokenLayout layout_; // the tokens, and the input as the last box
    QLineEdit* input_;
    int editing_ = None; // the token that the input is shown in place of
    int current_ = None; // the token that the arrow keys start from; None while typing
    int anchor_ = None; // the token where a range of selected tokens begins
    std::set<int> selected_;
    bool afterComma_ = false; // a space right after a comma belongs to the comma
};

#pragma once

#include "ui/parts/TWTokenLayout.h"

#include <QAbstractScrollArea>
#include <QStringList>

#include <set>

class QLineEdit;

// A list of words, each shown as a token, edited like a text. Comma or Return ends a word; tokens are chosen with the
// mouse or the arrow keys, edited with a double click, F2 or Return, removed with Delete or Backspace. Tokens are
// painted and are no widgets, so that ten thousand cost no more than those in sight. The keyboard belongs to one line
// edit all the time: it stands behind the last token, or in the place of the token being edited.
class TWTokenField final : public QAbstractScrollArea {
    Q_OBJECT

public:
    explicit TWTokenField(QWidget* parent = nullptr);

    // In order, with duplicates and empty words. What is typed but not ended yet is no word.
    const QStringList& words() const { return words_; }

    // The word being typed or edited stays as it is; the edited one is a new word when its token is gone.
    void setWords(const QStringList&);

    // Ends the word being typed or edited.
    void finishTyping();

    // Forgets the word being typed; a token being edited stays as it was.
    void discardTyping();

    // Where a token is, in the viewport.
    QRect tokenRect(int token) const;

signals:
    // By the user; not by setWords().
    void wordsEdited();

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
    void measure();
    void arrange();
    void placeInput();
    void reveal(const QRect&);
    void paintToken(QPainter&, int token) const;
    void paintFrame(QPainter&, int token) const;
    void updateDescription();

    void splitTyped(const QString& typed);
    bool paste();
    void insertTyped(const QStringList& words);
    void removeSelected();
    void wordsChanged();
    int placeOfEdited(const QStringList& words) const;
    void beginEditing(int token);
    void leaveEdited();

    void choose(int token, Qt::KeyboardModifiers = Qt::NoModifier);
    void chooseAll();
    void backToInput();
    void copySelected() const;
    bool inputKey(QKeyEvent&);
    bool tokenKey(QKeyEvent&);
    int moved(int key) const;

    QStringList words_;
    std::vector<int> widths_; // of each word's token
    TWTokenLayout layout_; // of the tokens, and of the input as the last
    QLineEdit* input_;
    int editing_ = None; // the token in whose place the input stands
    int current_ = None; // the token the arrow keys start from; none while typing
    int anchor_ = None; // where a range of selected tokens begins
    std::set<int> selected_;
    bool afterComma_ = false; // one blank that follows a comma belongs to it
};

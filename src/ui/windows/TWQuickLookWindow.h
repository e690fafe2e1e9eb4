#pragma once

#include "app/TWFileSample.h"
#include "platform/TWBackgroundStream.h"
#include "platform/TWPlaces.h"

#include <QImage>
#include <QStringList>
#include <QTimer>
#include <QWidget>

class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QStackedWidget;
class TWMessageBar;
class TWPictureView;
class TWQuietLabel;
class TWSpinner;
class TWTextLabel;

// A look into one file: its text, its bytes or its picture. Changes nothing and remembers nothing. The window stays in
// front of the one from which it is opened, be it a sheet, and leaves it the keys: the user goes on moving through the
// opener, and showFile() follows. Where the preview gets the keys nevertheless, the arrow keys still move through the
// opener, until the user clicks or tabs into the text. Space and Escape close it. It is also hidden with the opener.
class TWQuickLookWindow final : public QWidget {
    Q_OBJECT

public:
    // The opener, a list of what can be looked at, owns this window. The file system and the places must outlive it and
    // the run loop's background work.
    TWQuickLookWindow(TWRunLoop&, const TWFileSystem&, const TWPlaces&, QWidget& opener);

    // Shows what is at the path, instead of what was shown or looked for before. Opens the window if it is closed.
    void showFile(const std::string& path);

    bool isShown() const { return isVisible(); }

protected:
    bool eventFilter(QObject*, QEvent*) override;
    void keyPressEvent(QKeyEvent*) override;
    void closeEvent(QCloseEvent*) override;

private:
    // What the background work found.
    struct Content {
        TWFileSample sample; // its text is in pieces
        QStringList pieces;
        QImage picture;
        QSize pictureSize; // before it was scaled down, in pixels
    };

    void createHeader();
    void createPages();
    void createFindBar();
    void createShortcuts();
    void placeBesideOpener();
    static Content read(const TWFileSystem&, const std::string& path, const TWCancellation&);
    static QString factsOf(const Content&);
    void clear();
    void showContent(const Content&);
    void appendPiece();
    void openFindBar();
    void find(bool backward);
    void endFindingOrClose();

    TWRunLoop& runLoop_;
    const TWFileSystem& fileSystem_;
    const TWPlaces& places_;
    QWidget& opener_;
    TWTextLabel* name_ = nullptr;
    TWQuietLabel* path_ = nullptr;
    TWQuietLabel* facts_ = nullptr;
    TWSpinner* spinner_ = nullptr;
    TWMessageBar* notice_ = nullptr;
    QStackedWidget* pages_ = nullptr;
    QPlainTextEdit* text_ = nullptr;
    TWPictureView* picture_ = nullptr;
    QLabel* message_ = nullptr;
    QWidget* findBar_ = nullptr;
    QLineEdit* findField_ = nullptr;
    QLabel* notFound_ = nullptr;
    QStringList pieces_; // of the text, not shown yet
    QTimer appending_;
    std::unique_ptr<TWBackgroundStream<Content>> reading_;
};

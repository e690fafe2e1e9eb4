#include "ui/windows/TWQuickLookWindow.h"

#include "TWUITestSupport.h"
#include "ui/parts/ImageAndTextCell.h"
#include "ui/parts/TWPictureDecoder.h"
#include "ui/parts/TWQtText.h"
#include "ui/parts/TWQuickLookOutlineView.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QStandardItemModel>
#include <QVBoxLayout>

using namespace TWUITest;

namespace {

// A sheet with a tree of files, as an editor uses the preview.
class TWQuickLookWindowTest : public testing::Test, protected TWQuickLookOutlineViewDelegate {
protected:
    TWQuickLookWindowTest()
    {
        mainWindow.show();
        sheet.setWindowModality(Qt::WindowModal);
        (new QVBoxLayout(&sheet))->addWidget(tree);
        tree->setModel(&model);
        tree->setItemDelegate(new ImageAndTextCell(tree));
        preview = new TWQuickLookWindow(runLoop, fileSystem, places, *tree);
        text = child<QPlainTextEdit>(*preview, "contentsPlainTextEdit");
        QObject::connect(tree->selectionModel(), &QItemSelectionModel::currentChanged, tree, [this] {
            if (preview->isShown())
                preview->showFile(selected());
        });
    }
    void add(const std::string& name, const std::string& bytes)
    {
        root.write(name, bytes);
        model.appendRow(new QStandardItem(TWQtText::path(root.path(name))));
    }
    void open()
    {
        sheet.open();
        tree->setFocus();
        tree->setCurrentIndex(model.index(0, 0));
        ASSERT_TRUE(QTest::qWaitForWindowActive(&sheet));
    }
    std::string selected() const { return tree->currentIndex().data().toString().toStdString(); }
    void outlineViewSpaceKeyDown(const QKeyEvent&) override
    {
        ++spaces;
        preview->isShown() ? static_cast<void>(preview->close()) : preview->showFile(selected());
    }
    bool shows(const std::string& what)
    {
        return QTest::qWaitFor([&] { return text->toPlainText().toStdString() == what && text->isVisible(); });
    }

    TWTemporaryFolder root;
    TWLinuxFileSystem fileSystem;
    TWPlaces places;
    TWQtRunLoop runLoop;
    QStandardItemModel model;
    QWidget mainWindow;
    QDialog sheet{ &mainWindow };
    TWQuickLookOutlineView* tree = new TWQuickLookOutlineView;
    TWQuickLookWindow* preview;
    QPlainTextEdit* text;
    int spaces = 0;
};

TEST_F(TWQuickLookWindowTest, SpaceOpensItBesideASheetAndTheArrowKeysMoveOnThroughTheTree)
{
    add("first", "one\n");
    add("second", "two\n");
    open();
    QTest::keyClick(tree, Qt::Key_Space);
    EXPECT_EQ(spaces, 0) << "there is no delegate yet";
    tree->setDelegate(this);
    QTest::keyClick(tree, Qt::Key_Space);
    EXPECT_TRUE(preview->isShown() && shows("one\n"));
    QTest::keyClick(tree, Qt::Key_Down);
    EXPECT_TRUE(shows("two\n"));
    // Also where the window manager gives the preview the keys.
    preview->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(preview));
    QTest::keyClick(preview->windowHandle(), Qt::Key_Up);
    EXPECT_TRUE(shows("one\n"));
    // While words to find are typed, Space and Escape belong to them.
    QTest::keyClick(preview->windowHandle(), Qt::Key_F, Qt::ControlModifier);
    QTest::keyClick(preview->windowHandle(), Qt::Key_Space);
    EXPECT_EQ(child<QLineEdit>(*preview, "findField")->text(), " ");
    QTest::keyClick(preview->windowHandle(), Qt::Key_Escape);
    EXPECT_TRUE(preview->isShown());
    QTest::keyClick(preview->windowHandle(), Qt::Key_Space);
    EXPECT_FALSE(preview->isShown());
    EXPECT_TRUE(QTest::qWaitForWindowActive(&sheet));
    EXPECT_TRUE(tree->hasFocus());
    QTest::keyClick(tree, Qt::Key_Space);
    QTest::keyClick(tree, Qt::Key_Escape);
    EXPECT_FALSE(preview->isShown());
    EXPECT_TRUE(sheet.isVisible()) << "the first Escape closes the preview only";
    QTest::keyClick(tree, Qt::Key_Space);
    sheet.close();
    EXPECT_FALSE(preview->isShown());
}

TEST_F(TWQuickLookWindowTest, EachKindOfFileReplacesWhatWasShownBefore)
{
    std::string longText;
    for (int line = 0; line < 15'000; ++line)
        longText += "line " + std::to_string(line) + '\n';
    QImage picture(3000, 10, QImage::Format_RGB32);
    picture.fill(Qt::red);
    picture.setText("Comment", QString(1'000'000, 'x'));
    picture.save(QString::fromStdString(root.path("picture")), "PNG");
    const auto decode = [bytes = root.read("picture")](const TWCancellation& cancellation) {
        QSize size;
        return TWPictureDecoder::decode(bytes, cancellation, size);
    };
    TWCancellation cancellation;
    EXPECT_EQ(decode(cancellation).textKeys(), QStringList()) << "many compressed texts would take all memory";
    cancellation.cancel();
    EXPECT_TRUE(decode(cancellation).isNull());
    add("long", longText);
    open();
    preview->showFile(root.path("long"));
    preview->showFile(root.write("bytes", std::string(3, '\1')));
    EXPECT_TRUE(shows("00000000  01 01 01                                          ...\n"));
    preview->showFile(root.path("long"));
    EXPECT_TRUE(shows(longText)) << "pieces are missing or out of order";
    const auto facts = [&] { return child<QLabel>(*preview, "factsLabel")->text().toStdString(); };
    preview->showFile(root.path("picture"));
    EXPECT_EQ(facts(), "");
    auto* view = child<QWidget>(*preview, "pictureView");
    ASSERT_TRUE(QTest::qWaitFor([&] { return view->isVisible(); }));
    EXPECT_TRUE(facts().starts_with("Picture, 3000 x 10 pixels, ")) << facts();
    const auto drawn = view->grab().toImage();
    EXPECT_EQ(drawn.pixelColor(1, drawn.height() / 2), QColor(Qt::red)) << "scaled down to the whole width";
    EXPECT_NE(drawn.pixelColor(drawn.width() / 2, drawn.height() / 2 + 6), QColor(Qt::red)) << "not made higher";
    preview->showFile(root.path("none"));
    auto* message = child<QLabel>(*preview, "messageLabel");
    ASSERT_TRUE(QTest::qWaitFor([&] { return message->isVisible(); }));
    EXPECT_EQ(message->text(), "There is nothing any more at this path.");
    preview->showFile(root.path("long"));
    preview->close();
    QTest::qWait(0);
    EXPECT_EQ(text->toPlainText(), "") << "a closed preview reads on";
}

// In colours that no style uses.
TEST_F(TWQuickLookWindowTest, ACellHasAnIconOfOneSizeThatIsFadedWhileItIsGreyed)
{
    const auto pixels = [this](const QIcon& icon, bool greyed) {
        auto* item = new QStandardItem(icon, QString(200, 'x'));
        item->setData(greyed, ImageAndTextCell::GreyedRole);
        model.clear();
        model.appendRow(item);
        const auto picture = tree->viewport()->grab().toImage();
        int count = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x)
                count += picture.pixelColor(x, y) == QColor(255, 0, 255);
        return count / (picture.devicePixelRatio() * picture.devicePixelRatio());
    };
    QPixmap large(64, 64);
    large.fill(QColor(255, 0, 255));
    open();
    EXPECT_EQ(pixels(large, false), 16 * 16);
    EXPECT_EQ(pixels(large, true), 0);
}

}

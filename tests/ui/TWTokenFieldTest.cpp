#include "ui/TWTokenField.h"

#include "TWSheetTestSupport.h"
#include "ui/TWDictionarySheet.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>

namespace {

class TWTokenFieldTest : public testing::Test {
protected:
    void SetUp() override
    {
        field.resize(400, 200);
        field.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&field));
        QObject::connect(&field, &TWTokenField::wordsEdited, [this] { ++edits; });
    }

    void type(const QString& text) { QTest::keyClicks(input, text); }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(input, key, modifiers); }
    void click(int token, Qt::KeyboardModifiers modifiers = {})
    {
        QTest::mouseClick(field.viewport(), Qt::LeftButton, modifiers, field.tokenRect(token).center());
    }
    void paste(const QString& text)
    {
        QApplication::clipboard()->setText(text);
        key(Qt::Key_V, Qt::ControlModifier);
    }

    TWTokenField field;
    QLineEdit* input = field.findChild<QLineEdit*>("wordLineEdit");
    int edits = 0;
};

TEST_F(TWTokenFieldTest, EndsWordsAtCommaAndReturnAsTyped)
{
    type("tax return, Bills,,  two");
    EXPECT_EQ(field.words(), QStringList({ "tax return", "Bills", "" }));
    key(Qt::Key_Return);
    type("Bills");
    key(Qt::Key_Return);
    EXPECT_EQ(field.words(), QStringList({ "tax return", "Bills", "", " two", "Bills" }));
    EXPECT_EQ(input->text(), "");
    EXPECT_EQ(edits, 5);
    key(Qt::Key_Return);
    EXPECT_EQ(edits, 5) << "with nothing typed, Return is the sheet's";
}

TEST_F(TWTokenFieldTest, SplitsWhatIsPastedAndKeepsTensOfThousands)
{
    type("pre");
    paste("fix, b\r\nc d\n\n e,");
    EXPECT_EQ(field.words(), QStringList({ "prefix", "b", "c d", "", " e" }));
    EXPECT_EQ(edits, 1);
    type(" f,");
    EXPECT_EQ(field.words().last(), "f");
    QStringList many;
    for (int word = 0; word < 20000; ++word)
        many.append(QString("word %1").arg(word));
    paste(many.join('\n'));
    EXPECT_EQ(field.words().mid(6), many);
    EXPECT_LE(field.findChildren<QWidget*>().size(), 20);
}

TEST_F(TWTokenFieldTest, EditsATokenInItsPlace)
{
    field.setWords({ "Meier, Hans" });
    key(Qt::Key_Left);
    key(Qt::Key_F2);
    key(Qt::Key_Return);
    EXPECT_EQ(field.words(), QStringList("Meier, Hans")) << "not edited";
    field.setWords({ "one", "two", "three" });
    QTest::mouseDClick(field.viewport(), Qt::LeftButton, {}, field.tokenRect(1).center());
    EXPECT_EQ(input->text(), "two");
    type("2,zwei");
    key(Qt::Key_Return);
    EXPECT_EQ(field.words(), QStringList({ "one", "2", "zwei", "three" }));
    key(Qt::Key_F2);
    EXPECT_EQ(input->text(), "zwei");
    type("gone");
    key(Qt::Key_Escape);
    EXPECT_EQ(field.words()[2], "zwei");
    key(Qt::Key_Left);
    key(Qt::Key_Return);
    key(Qt::Key_Backspace);
    click(3);
    EXPECT_EQ(field.words(), QStringList({ "one", "", "zwei", "three" })) << "emptied is empty, not removed";
    key(Qt::Key_Delete);
    EXPECT_EQ(field.words(), QStringList({ "one", "", "zwei" }));
}

TEST_F(TWTokenFieldTest, SelectsAndRemovesSeveral)
{
    field.setWords({ "0", "1", "2", "3", "4", "5", "6" });
    click(1);
    click(3, Qt::ShiftModifier);
    click(5, Qt::ControlModifier);
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QApplication::clipboard()->text(), "1\n2\n3\n5");
    click(2, Qt::ControlModifier);
    key(Qt::Key_Backspace);
    EXPECT_EQ(field.words(), QStringList({ "0", "2", "4", "6" }));
    EXPECT_EQ(field.accessibleDescription(), "4 word(s); selected: 2");
    type("x,");
    EXPECT_EQ(field.words().last(), "x") << "typing goes on at the end";
    key(Qt::Key_Left);
    key(Qt::Key_Left, Qt::ShiftModifier);
    key(Qt::Key_Delete);
    EXPECT_EQ(field.words(), QStringList({ "0", "2", "4" }));
    key(Qt::Key_End);
    key(Qt::Key_Backspace);
    EXPECT_EQ(field.words().size(), 3) << "the first Backspace only selects";
    key(Qt::Key_A, Qt::ControlModifier);
    key(Qt::Key_Delete);
    EXPECT_TRUE(field.words().isEmpty());
}

TEST_F(TWTokenFieldTest, WrapsAndScrollsToWhereTheKeysAre)
{
    QStringList words;
    for (int word = 0; word < 300; ++word)
        words.append("some word");
    field.setWords(words + QStringList{ QString(500, 'w') });
    EXPECT_LE(field.tokenRect(300).width(), field.viewport()->width());
    key(Qt::Key_Left);
    EXPECT_TRUE(field.viewport()->rect().contains(field.tokenRect(300)));
    key(Qt::Key_Home);
    EXPECT_TRUE(field.viewport()->rect().contains(field.tokenRect(0)));
    key(Qt::Key_Down);
    key(Qt::Key_Delete);
    EXPECT_EQ(field.words().size(), 300);
    EXPECT_GT(field.tokenRect(299).top(), field.viewport()->height());
}

class TWDictionarySheetTest : public testing::Test {
protected:
    void SetUp() override
    {
        world.dataFolder.make();
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    }

    void press(const char* button) { sheet.findChild<QPushButton*>(button)->click(); }

    TWSheetTestWorld world;
    TWDictionarySheet sheet{ world.dictionary, world.help, nullptr };
    QLineEdit* input = sheet.findChild<QLineEdit*>("wordLineEdit");
};

TEST_F(TWDictionarySheetTest, CancelKeepsEndedWordsUntilTheNextOpening)
{
    QTest::keyClicks(input, "a,b,unfinished");
    EXPECT_EQ(sheet.findChild<QLabel*>("countLabel")->text(), "2 words");
    QTest::keyClick(input, Qt::Key_Escape);
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_EQ(world.dictionary.wordDictionary().size(), 2U);
    world.dictionary.loadDictionary();
    sheet.open();
    EXPECT_EQ(sheet.findChild<QLabel*>("countLabel")->text(), "0 words");
}

TEST_F(TWDictionarySheetTest, ShowsWhatACommandChangesAndKeepsTheTyping)
{
    QTest::keyClicks(input, "a,b,");
    QTest::keyClick(input, Qt::Key_Left);
    QTest::keyClick(input, Qt::Key_F2);
    QTest::keyClicks(input, "B");
    world.dictionary.replaceWords({ "b", "c" });
    QTest::keyClick(input, Qt::Key_Return);
    EXPECT_EQ(world.dictionary.wordDictionary(), (std::vector<std::string>{ "B", "c" }));
}

TEST_F(TWDictionarySheetTest, SavesWithReturnIncludingTheUnfinishedWord)
{
    QTest::keyClicks(input, "one,two");
    press("savePushButton");
    EXPECT_FALSE(sheet.isVisible());
    world.dictionary.loadDictionary();
    EXPECT_EQ(world.dictionary.wordDictionary(), (std::vector<std::string>{ "one", "two" }));
}

TEST_F(TWDictionarySheetTest, StaysOpenWithTheProblemWhenSavingFails)
{
    std::filesystem::remove_all(world.dataFolder.path());
    world.fileSystem.writeAtomically(world.dataFolder.path(), "a file in the way");
    QTest::keyClicks(input, "word");
    QTest::keyClick(input, Qt::Key_Return);
    QTest::keyClick(input, Qt::Key_Return);
    EXPECT_TRUE(sheet.isVisible());
    const auto reason = QString::fromStdString("could not be saved (" + TWErrorText(ENOTDIR));
    EXPECT_TRUE(sheet.findChild<QLabel*>("messageLabel")->text().contains(reason));
    EXPECT_EQ(world.dictionary.wordDictionary(), std::vector<std::string>{ "word" });
}

TEST(TWHelpWindowTest, EveryLinkOfEveryPageLeadsSomewhere)
{
    TWSheetTestWorld world;
    EXPECT_EQ(world.help.windowTitle().toStdString(), world.bundle.info("CFBundleHelpBookName"));
    auto* browser = world.help.findChild<QTextBrowser*>("helpTextBrowser");
    for (const auto* page : { "index", "Files", "Dictionary", "Cleaning" }) {
        world.help.openAnchor(page);
        EXPECT_TRUE(browser->source().path().endsWith(QString(page) + ".html"));
        EXPECT_FALSE(browser->documentTitle().isEmpty()) << page;
        for (auto block = browser->document()->begin(); block.isValid(); block = block.next()) {
            for (const auto& format : block.textFormats()) {
                const auto link = format.format.anchorHref();
                EXPECT_TRUE(link.isEmpty() || QFile::exists(browser->source().resolved(link).path()))
                    << link.toStdString();
            }
        }
    }
    world.help.openAnchor("NoSuchPage");
    EXPECT_TRUE(browser->source().path().endsWith("index.html"));
}

}

#include "ui/parts/TWTokenField.h"

#include "TWUITestSupport.h"
#include "ui/parts/TWQtText.h"
#include "ui/sheets/TWDictionarySheet.h"

#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QPushButton>

using namespace TWUITest;

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
    EXPECT_TRUE(field.viewport()->rect().contains(input->geometry())) << "the caret is out of view";
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
    QTest::mouseClick(field.viewport(), Qt::LeftButton, {}, field.tokenRect(3).center());
    key(Qt::Key_Delete);
    EXPECT_EQ(field.words(), QStringList({ "one", "2", "zwei" }));
}

TEST(TWQtText, KeepsByteOrderMarksAndTheDirectionOfPaths)
{
    EXPECT_EQ(TWQtText::shown("/etc/x"), "/etc/x");
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    EXPECT_EQ(TWQtText::shown("/etc/x"), u"\u2066/etc/x\u2069");
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    const std::string marked = "\xEF\xBB\xBF\xEF\xBB\xBFword";
    EXPECT_EQ(TWQtText::bytes(TWQtText::exact(marked)), marked);
}

class TWDictionarySheetTest : public testing::Test {
protected:
    void SetUp() override
    {
        sheet.open();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&sheet));
    }

    void type(const QString& text) { QTest::keyClicks(input, text); }
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(input, key, modifiers); }
    Lines words() const { return world.dictionary.wordDictionary(); }

    Editors world;
    TWDictionarySheet sheet{ world.dictionary, nullptr };
    QLineEdit* input = sheet.findChild<QLineEdit*>("wordLineEdit");
};

TEST_F(TWDictionarySheetTest, CancelKeepsEndedWordsUntilTheNextOpeningAndSaveAlsoTheUnfinishedOne)
{
    type("a,b,unfinished");
    key(Qt::Key_Escape);
    EXPECT_FALSE(sheet.isVisible());
    EXPECT_EQ(words().size(), 2U);
    world.dictionary.loadDictionary();
    sheet.open();
    EXPECT_EQ(words(), Lines());
    type("one,two");
    child<QPushButton>(sheet, "savePushButton")->click();
    EXPECT_FALSE(sheet.isVisible());
    world.dictionary.loadDictionary();
    EXPECT_EQ(words(), (Lines{ "one", "two" }));
}

TEST_F(TWDictionarySheetTest, RemovedWordsComeBackAndNothingElse)
{
    type("a,b,c,d,");
    const auto before = words();
    key(Qt::Key_Left);
    key(Qt::Key_Delete);
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(input->accessibleDescription(), "3 words; 3 words selected: a, b, c");
    key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_TRUE(words().empty());
    type("later,");
    EXPECT_NE(child<QLabel>(sheet, "undoBarLabel")->text(), "") << "the removed words must not seem to be lost";
    const auto undo = [this] { key(Qt::Key_Z, Qt::ControlModifier); };
    undo();
    EXPECT_TRUE(words().empty()) << "the latest change comes first";
    undo();
    undo();
    EXPECT_EQ(words(), before);
    key(Qt::Key_F2);
    type("D");
    key(Qt::Key_Return);
    undo();
    EXPECT_EQ(words(), before);
    undo();
    EXPECT_EQ(words(), (Lines{ "a", "b", "c" }));
    EXPECT_EQ(input->text(), "");
}

TEST_F(TWDictionarySheetTest, ShowsWhatACommandChangesAndKeepsTheTyping)
{
    type("a,b,");
    key(Qt::Key_Left);
    key(Qt::Key_F2);
    type("B");
    world.dictionary.list().changeSaved([](auto& saved) {
        saved = { { "b" }, { "c" } };
        return true;
    });
    key(Qt::Key_Return);
    EXPECT_EQ(words(), (Lines{ "B", "c" }));
}

TEST_F(TWDictionarySheetTest, StaysOpenWithTheProblemWhenSavingFails)
{
    std::filesystem::remove_all(world.listFolder.path());
    world.ownFiles.writeAtomically(world.listFolder.path(), "a file in the way");
    type("word");
    key(Qt::Key_Return);
    key(Qt::Key_Return);
    EXPECT_TRUE(sheet.isVisible());
    const auto reason = QString::fromStdString("could not be saved (" + TWErrorText(ENOTDIR));
    EXPECT_TRUE(child<QLabel>(sheet, "messageBarLabel")->text().contains(reason));
    EXPECT_EQ(words(), Lines{ "word" });
}

}

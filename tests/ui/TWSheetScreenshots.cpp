// Pictures of the sheets for the eye of a person: TIDEWELL_SCREENSHOTS=FOLDER tests_ui --gtest_filter='TWSheetScreenshots.*'

#include "TWSheetTestSupport.h"
#include "ui/TWDictionarySheet.h"
#include "ui/TWFilesSheet.h"

#include <gtest/gtest.h>

#include <QStyleFactory>
#include <QTableView>
#include <QTest>

namespace {

QPalette darkPalette()
{
    QPalette palette(QColor(53, 53, 53), QColor(42, 42, 42));
    palette.setColor(QPalette::Base, QColor(35, 35, 35));
    palette.setColor(QPalette::AlternateBase, QColor(44, 44, 44));
    palette.setColor(QPalette::Highlight, QColor(61, 126, 201));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::Link, QColor(120, 180, 255));
    palette.setColor(QPalette::LinkVisited, QColor(190, 160, 255));
    return palette;
}

void take(QWidget& widget, const QString& name)
{
    widget.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&widget));
    const auto scale = widget.devicePixelRatioF() > 1 ? "-2x" : "";
    EXPECT_TRUE(widget.grab().save(QString("%1/%2%3.png").arg(qEnvironmentVariable("TIDEWELL_SCREENSHOTS"), name, scale)));
}

void takeFiles(const QString& theme)
{
    TWSheetTestWorld world;
    world.folder.write("home/.cache/thumbnails/normal/a.png", std::string(123456, 'x'));
    world.folder.write("home/.bash_history", "ls");
    TWFilesSheet sheet(world.files, world.help, nullptr);
    take(sheet, "files-empty" + theme);
    sheet.hide();
    world.files.applyDefaults();
    auto& rules = *world.files.settings();
    rules.resize(8);
    rules.push_back({true, "Old project", "~/Projects/Nobody knows where this went/and how deep it was/reports", TWFolderContents});
    rules.push_back({false, "Papers", "~/Documents", TWItemsWithKeywordsDeep});
    rules.push_back({false, "From a newer version", "~/.cache/later", 7});
    rules.push_back({true, "My home", "~", TWItemItself});
    rules.push_back({true, "Everything!", "/", TWItemItself});
    world.files.reloadTable();
    sheet.open();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !world.files.note(8).text.empty(); }));
    sheet.findChild<QTableView*>()->selectRow(8);
    take(sheet, "files" + theme);
}

void takeDictionary(const QString& theme)
{
    TWSheetTestWorld world;
    TWDictionarySheet sheet(world.dictionary, world.help, nullptr);
    take(sheet, "dictionary-empty" + theme);
    std::vector<std::string> words {"invoice", "tax return", "\xC3\x84rzte", "", "a word that is so long that it cannot stand in one line of "
                                                                     "this field, however wide the window is made by its user today"};
    while (words.size() < 40)
        words.push_back("word " + std::to_string(words.size() * words.size()));
    world.dictionary.setWordDictionary(words);
    sheet.hide();
    sheet.show();
    for (const auto key : {Qt::Key_Left, Qt::Key_Up, Qt::Key_Up})
        QTest::keyClick(sheet.focusWidget(), key, key == Qt::Key_Up ? Qt::NoModifier : Qt::KeyboardModifiers());
    QTest::keyClick(sheet.focusWidget(), Qt::Key_Right, Qt::ShiftModifier);
    take(sheet, "dictionary" + theme);
    QTest::keyClick(sheet.focusWidget(), Qt::Key_F2);
    take(sheet, "dictionary-editing" + theme);
    world.folder.write("home/.config/Tidewell/Dictionary.plist", "no list");
    world.dictionary.loadDictionary();
    take(sheet, "dictionary-problem" + theme);
}

TEST(TWSheetScreenshots, AreTaken)
{
    if (!qEnvironmentVariableIsSet("TIDEWELL_SCREENSHOTS"))
        GTEST_SKIP() << "TIDEWELL_SCREENSHOTS names no folder";
    auto& application = sheetTestApplication();
    const auto before = application.palette();
    application.setStyle(QStyleFactory::create("Fusion"));
    for (const bool dark : {false, true}) {
        application.setPalette(dark ? darkPalette() : before);
        const QString theme = dark ? "-dark" : "";
        takeFiles(theme);
        takeDictionary(theme);
        TWSheetTestWorld world;
        world.help.openAnchor("Files");
        take(world.help, "help" + theme);
    }
    application.setPalette(before);
}

}

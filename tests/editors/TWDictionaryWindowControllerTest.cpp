#include "editors/TWDictionaryWindowController.h"

#include "fakes/TWFakeMachine.h"

namespace {

struct DictionaryView final : TWDictionaryView {
    Lines calls;
    void closeSheet() override { calls.emplace_back("close"); }
    void openHelpAnchor(const std::string&) override { }
    void wordsChanged() override { calls.emplace_back("words"); }
    void showProblem(const std::string&) override { calls.emplace_back("problem"); }
};

class TWDictionaryWindowControllerTest : public testing::Test, protected TWFakeMachine {
protected:
    TWDictionaryWindowControllerTest() { controller.setView(&view); }
    const Lines& reload()
    {
        controller.loadDictionary();
        return controller.wordDictionary();
    }
    static constexpr auto File = "home/.local/share/Tidewell/Dictionary.plist";

    TWDictionaryWindowController controller{ listFolder };
    DictionaryView view;
};

}

TEST_F(TWDictionaryWindowControllerTest, WordsSurviveASaveAsTheyWereTyped)
{
    EXPECT_EQ(reload(), Lines());
    const Lines words{ "Größe", "", "b", "a", "b", " two words ", "\xF0\x9F\x92\xA7",
        "\xEF\xBB\xBF"
        "BOM" };
    controller.setWordDictionary(words);
    EXPECT_TRUE(controller.hasUnsavedEdits());
    controller.save();
    EXPECT_FALSE(controller.hasUnsavedEdits());
    EXPECT_EQ(TWDictionaryWindowController(listFolder).wordDictionary(), Lines());
    EXPECT_NE(root.read(File).find("<data>"), std::string::npos);
    EXPECT_EQ(reload(), words);
    EXPECT_EQ(view.calls, (Lines{ "words", "close", "words" }));
}

TEST_F(TWDictionaryWindowControllerTest, AnElementThatIsNoWordKeepsTheWordsAndTheFile)
{
    controller.setWordDictionary({ "kept" });
    for (const auto* element : { "<string>text</string>", "<data>/w==</data>" }) {
        const auto damaged
            = std::string("<plist version=\"1.0\"><array><data>YQ==</data>") + element + "</array></plist>";
        root.write(File, damaged);
        EXPECT_EQ(reload(), Lines{ "kept" });
        EXPECT_NE(controller.problem().find("entry 2 is not a word"), std::string::npos) << controller.problem();
        EXPECT_EQ(root.read(File), damaged);
    }
    controller.setWordDictionary({ std::string(1 << 19, 'a'), std::string(1 << 19, 'b') });
    EXPECT_EQ(controller.write(), "");
    controller.setWordDictionary({ std::string(1 << 20, 'a'), "b" });
    EXPECT_NE(controller.write().find("longer than 1 MiB together"), std::string::npos);
    TWValue::Array tooMany{ TWData{ std::string(1 << 20, 'a') }, TWData{ "b" } };
    EXPECT_EQ(listFolder.write("Dictionary.plist", tooMany, TWOldFile::Replace).problem, "");
    EXPECT_EQ(reload().back(), "b") << "the words stay as they were";
    EXPECT_NE(controller.problem().find("longer than 1 MiB together"), std::string::npos);
    std::filesystem::remove(listFolder.file("Dictionary.plist"));
    root.write(File + std::string("/in the way"), "x");
    controller.save();
    EXPECT_EQ(view.calls.back(), "problem");
}

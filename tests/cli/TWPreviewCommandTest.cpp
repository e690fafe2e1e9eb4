#include "TWProgramTest.h"

#include <csignal>
#include <nlohmann/json.hpp>
#include <thread>

namespace {

using namespace std::chrono_literals;

class TWPreviewCommandTest : public TWProgramTest { };

}

TEST_F(TWPreviewCommandTest, PrintsEachIntendedChangeAndMakesNone)
{
    expectRefused(run({ "preview" }), "no cleaner is on", 3);
    expectRefused(run({ "preview", "--only", "nonsense" }), "nonsense");
    EXPECT_EQ(run({ "preview", "--only", "trash" }).out,
        "Trash:\n  The Trash is empty\n0 items, 0 bytes would be deleted.\n");
    trash("bad\xff\n\033[31m");
    folder_.write("home/.local/share/Trash/files/folder/file", std::string(50'000, 'x'));
    const auto good = run({ "preview", "--only", "trash" });
    EXPECT_EQ(good.status, 0) << good.err;
    EXPECT_EQ(lines(good.out).size(), 5U) << good.out;
    EXPECT_EQ(good.out.find('\033'), std::string::npos);
    EXPECT_NE(good.out.find("2 items, "), std::string::npos) << "records are not counted";

    EXPECT_EQ(run({ "files", "add", folder_.path("home/.local/share"), "--what", "contents" }).status, 0);
    EXPECT_EQ(run({ "words", "add", "bank" }).status, 0);
    EXPECT_EQ(run({ "files", "add", "~/work", "--what", "keywords" }).status, 0);
    folder_.write("home/work/bank", "x");
    folder_.write("home/work/kept", "x");
    const auto result = run({ "preview", "--only", "trash,files", "--json" });
    EXPECT_EQ(result.status, 1) << "the data folder would be refused";
    std::map<std::string, nlohmann::json> objects;
    for (const auto& line : lines(result.out)) {
        auto object = nlohmann::json::parse(line, nullptr, false);
        ASSERT_TRUE(object.is_object()) << line;
        EXPECT_EQ(object["action"], "delete");
        EXPECT_EQ(object.contains("pathBytes"), line.find("bad") != std::string::npos);
        objects[object["path"]] = object;
    }
    EXPECT_EQ(objects.size(), 6U) << result.out;
    EXPECT_GT(objects["ROOT/home/.local/share/Trash/files/folder"]["bytes"], 50'000);
    EXPECT_EQ(objects["ROOT/home/.local/share/Trash/files/folder"]["why"], "it is in the Trash");
    const auto why = objects["ROOT/home/work/bank"]["why"].get<std::string>();
    EXPECT_NE(why.find("names with a word in ~/work, the word \"bank\""), std::string::npos) << why;
    EXPECT_TRUE(objects["ROOT/home/.local/share/Tidewell"].contains("refused"));
    EXPECT_FALSE(objects["ROOT/home/.local/share/Trash"].contains("refused"));
    EXPECT_TRUE(folder_.exists("home/work/bank") && folder_.exists("home/.local/share/Trash/files/folder/file"));

    // Only what would be deleted is gone afterwards.
    EXPECT_EQ(run({ "clean", "--only", "trash,files", "--yes" }).status, 1);
    for (const auto& [path, object] : objects) {
        if (path.find("bad") != std::string::npos)
            continue;
        EXPECT_EQ(folder_.exists(path.substr(5)), object.contains("refused")) << path;
    }
}

TEST_F(TWPreviewCommandTest, CanBeInterrupted)
{
    for (int number = 0; number < 20'000; ++number)
        folder_.write("home/.local/share/Trash/files/" + std::to_string(number), "");
    const auto child = start({ "preview", "--only", "trash", "--json" });
    while (child.out().empty())
        std::this_thread::sleep_for(1ms);
    kill(child.process(), SIGINT);
    const auto result = child.wait();
    EXPECT_EQ(result.status, 130) << result.err;
    EXPECT_TRUE(result.out.ends_with("}\n")) << "no line is cut";
    EXPECT_LT(lines(result.out).size(), 20'000U);
}

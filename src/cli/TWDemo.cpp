#include "cli/TWDemo.h"

#include "cleaners/TWFilesRule.h"
#include "platform/TWFileSystem.h"
#include "plist/TWPropertyList.h"
#include "support/TWPath.h"
#include "support/TWText.h"

namespace {

constexpr auto NotWritten = "The demonstration could not write \"%@\" (%@). Please choose another folder.";

constexpr std::string_view TrashedFiles[]
    = { "old invoice.pdf", "holiday photo.jpg", "draft.odt", "notes/monday.txt", "notes/tuesday.txt" };
constexpr std::string_view OtherFiles[] = { ".cache/thumbnails/normal/3f2a.png", ".cache/thumbnails/large/9c1d.png",
    "Documents/Secret plan.txt", "Documents/letters/to the bank.txt", "Documents/letters/secret santa.txt",
    "Documents/recipe.txt", "Pictures/cat.jpg" };

constexpr auto Record = "[Trash Info]\nPath=Documents/%@\nDeletionDate=2026-01-02T03:04:05\n";

class World {
public:
    World(const TWOwnFiles& ownFiles)
        : ownFiles_(ownFiles)
    {
    }

    void write(const std::string& path, std::string_view contents)
    {
        if (!problem_.empty())
            return;
        int error = ownFiles_.makeFolders(std::string(TWPath::parent(path)));
        if (error == 0)
            error = ownFiles_.writeAtomically(path, contents);
        if (error != 0)
            problem_ = TWText::fill(NotWritten, { path, TWErrorText(error) });
    }

    void writeList(const std::string& path, const TWValue& list)
    {
        write(path, TWPropertyList::write(list, TWPropertyListFormat::XML).value_or(""));
    }

    const std::string& problem() const { return problem_; }

private:
    const TWOwnFiles& ownFiles_;
    std::string problem_;
};

TWValue::Array sampleRules()
{
    return { TWFilesRule{ true, "Thumbnails of pictures", "~/.cache/thumbnails", TWItemItself }.value(),
        TWFilesRule{ true, "Documents named with a word of the dictionary", "~/Documents", TWItemsWithKeywordsDeep }
            .value(),
        TWFilesRule{ false, "Pictures (switched off, so they stay)", "~/Pictures", TWFolderContents }.value() };
}

}

std::string TWMakeDemoWorld(
    const TWOwnFiles& ownFiles, const TWPlaces& places, const std::string& dataFolder, const std::string& defaultsFile)
{
    World world(ownFiles);
    for (const auto file : TrashedFiles) {
        const std::string item(file.substr(0, file.find('/')));
        world.write(places.trash + "/files/" + std::string(file), "A sample file of the demonstration.\n");
        world.write(places.trash + "/info/" + item + ".trashinfo", TWText::fill(Record, { item }));
    }
    for (const auto file : OtherFiles)
        world.write(places.home + "/" + std::string(file), "A sample file of the demonstration.\n");
    world.writeList(dataFolder + "/FilesRules.plist", sampleRules());
    world.writeList(dataFolder + "/Dictionary.plist", TWValue::Array{ TWData{ "secret" }, TWData{ "bank" } });
    TWDictionary settings;
    settings.set("TrashCleaner", true);
    settings.set("FilesCleaner", true);
    world.writeList(defaultsFile, settings);
    return world.problem();
}

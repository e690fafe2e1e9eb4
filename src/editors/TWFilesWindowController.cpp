#include "editors/TWFilesWindowController.h"

#include "editors/TWDictionaryWindowController.h"
#include "support/TWPath.h"

namespace {

constexpr auto FileName = "FilesRules.plist";
constexpr auto HelpAnchor = "Files";
constexpr auto ChooseTitle = "Select a file or folder";
constexpr auto ChoosePrompt = "Choose";

}

TWFilesWindowController::TWFilesWindowController(
    const TWEditorContext& context, const TWDictionaryWindowController& dictionary)
    : TWRulesEditor(context, FileName, HelpAnchor)
    , dictionary_(dictionary)
    , notes_(context.cleaners(), [this] { notesChanged(); })
{
}

void TWFilesWindowController::add()
{
    if (context().settings.boolean(TWKey::ManualFilesRuleCreation)) {
        addRule({});
        return;
    }
    if (!view())
        return;
    view()->choosePath(ChooseTitle, ChoosePrompt, [this](std::optional<std::string> path) {
        if (path)
            addPath(*path);
    });
}

void TWFilesWindowController::addPath(const std::string& path)
{
    addRule(
        { true, std::string(TWPath::lastComponent(path)), context().deletion.places.abbreviate(path), TWItemItself });
}

void TWFilesWindowController::setDescription(int row, const std::string& description)
{
    edit(row, [&](TWFilesRule& rule) { rule.description = description; });
}

void TWFilesWindowController::setFilePath(int row, const std::string& path)
{
    edit(row, [&](TWFilesRule& rule) { rule.filePath = path; });
    countNotes();
}

void TWFilesWindowController::setWhatToDelete(int row, std::int64_t whatToDelete)
{
    edit(row, [&](TWFilesRule& rule) { rule.whatToDelete = whatToDelete; });
    countNotes();
}

TWRuleNote TWFilesWindowController::note(int row) const
{
    return notes_.note(rule(row), dictionary_.wordDictionary());
}

void TWFilesWindowController::findNotes()
{
    notes_.find(rules(), dictionary_.wordDictionary());
}

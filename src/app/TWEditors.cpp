#include "app/TWEditors.h"

#include "editors/TWApplicationsWindowController.h"
#include "editors/TWFilesWindowController.h"
#include "editors/TWKeepWindowController.h"
#include "editors/TWLogsWindowController.h"
#include "editors/TWRecentItemsWindowController.h"
#include "editors/TWVolumesWindowController.h"

namespace {

template <typename Editor>
constexpr TWEditorRow row(const char* name)
{
    return { name,
        [](const TWEditorContext& context, const TWDictionaryWindowController& dictionary)
            -> std::unique_ptr<TWEditor> { return std::make_unique<Editor>(context, dictionary); } };
}

constexpr TWEditorRow Rows[] = {
    row<TWApplicationsWindowController>("applications"),
    row<TWVolumesWindowController>("volumes"),
    row<TWFilesWindowController>("files"),
    row<TWRecentItemsWindowController>("recent-items"),
    row<TWLogsWindowController>("logs"),
    row<TWKeepWindowController>("keep"),
};

}

std::span<const TWEditorRow> TWEditorTable()
{
    return Rows;
}

TWEditors::TWEditors(const TWEditorContext& context)
    : dictionary_(context.dataFolder)
{
    for (const auto& each : Rows)
        editors_.push_back(each.make(context, dictionary_));
}

void TWEditors::awakeFromNib(TWLaunchKind kind)
{
    dictionary_.awakeFromNib(kind);
    for (const auto& editor : editors_)
        editor->awakeFromNib(kind);
}

std::vector<std::string> TWEditors::problems() const
{
    std::vector<std::string> problems{ dictionary_.problem() };
    for (const auto& editor : editors_)
        problems.push_back(editor->problem());
    std::erase(problems, "");
    return problems;
}

std::vector<TWEditor*> TWEditors::all()
{
    std::vector<TWEditor*> all{ &dictionary_ };
    for (const auto& editor : editors_)
        all.push_back(editor.get());
    return all;
}

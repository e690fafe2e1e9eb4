#include "editors/TWKeepWindowController.h"

#include "deletion/TWFileDeleter.h"
#include "support/TWText.h"

namespace {

constexpr auto FileName = "KeepList.plist";
constexpr auto NoDefaults = "The default keep list \"%@\" could not be read. Please install Tidewell again.";

}

TWKeepWindowController::TWKeepWindowController(const TWEditorContext& context, const TWDictionaryWindowController&)
    : context_(context)
    , list_(
          context.dataFolder, FileName, [this](TWListState, const auto&) { return list_.read(defaultsPath()).records; })
{
    list_.setChanged([this] { handToGuard(); });
}

void TWKeepWindowController::awakeFromNib(TWLaunchKind)
{
    const auto state = list_.load();
    if (state == TWListState::Missing && list_.read(defaultsPath()).state != TWListState::Saved)
        defaultsProblem_ = TWText::fill(NoDefaults, { defaultsPath() });
    handToGuard();
}

void TWKeepWindowController::edit(const std::function<void(std::vector<TWKeepRecord>&)>& change)
{
    list_.edit(change);
    handToGuard();
}

std::string TWKeepWindowController::write()
{
    auto problem = list_.write();
    handToGuard();
    return problem;
}

std::string TWKeepWindowController::problem() const
{
    return list_.problem().empty() ? defaultsProblem_ : list_.problem();
}

std::string TWKeepWindowController::defaultsPath() const
{
    return context_.bundle.resourcePath(FileName);
}

void TWKeepWindowController::handToGuard()
{
    TWKeepList entries;
    if (problem().empty()) {
        entries.emplace();
        for (const auto& record : list_.records())
            entries->push_back(record.entry());
    }
    context_.deletion.guard.setKeepList(std::move(entries));
}

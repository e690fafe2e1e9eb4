#include "editors/TWVolumesWindowController.h"

#include "support/TWPath.h"
#include "support/TWText.h"

#include <algorithm>
#include <set>

namespace {

constexpr auto FileName = "Volumes.plist";
constexpr auto HelpAnchor = "Volumes";
constexpr auto TableUnreadable = "The mounted volumes could not be listed.";
constexpr auto NotText = "\"%@\" cannot be checked, because its path is not valid UTF-8.";

}

// No volume is unmounted unless the user has chosen it: nothing stands in for a list that cannot be read.
TWVolumesWindowController::TWVolumesWindowController(
    const TWEditorContext& context, const TWDictionaryWindowController&)
    : context_(context)
    , saved_(context.dataFolder, FileName, [](TWListState, const auto&) { return std::vector<TWVolumesRecord>(); })
{
    saved_.setChanged([this] { updateVolumesList(); });
}

void TWVolumesWindowController::awakeFromNib(TWLaunchKind)
{
    saved_.load();
    watch_ = context_.volumes.watch(context_.deletion.runLoop, [this] { updateVolumesList(); });
}

std::string TWVolumesWindowController::problem() const
{
    return saved_.problem().empty() && !isTableReadable_ ? TableUnreadable : saved_.problem();
}

// What nobody can tell stays as it was. In a sandbox the services of the desktop are not asked, and nothing of theirs
// would be shown.
void TWVolumesWindowController::readMounts()
{
    auto mounted = context_.volumes.mountedVolumes();
    const bool isComplete = places().sandboxed() || context_.volumes.unknownFolders().empty();
    isTableReadable_ = mounted && isComplete;
    if (!mounted)
        return;
    std::copy_if(mounted_.begin(), mounted_.end(), std::back_inserter(*mounted),
        [this](const auto& volume) { return !context_.volumes.isKnown(volume.path); });
    mounted_ = std::move(*mounted);
}

// Changes the vector in place, because the cleaner has it as well.
void TWVolumesWindowController::updateVolumesList()
{
    readMounts();
    auto& volumes = *volumesArray_;
    volumes = saved_.records();
    std::set<std::string_view> saved;
    for (const auto& record : saved_.records())
        saved.insert(record.volumePath);
    for (const auto& volume : mounted_) {
        if (!saved.contains(volume.path))
            volumes.push_back({ false, std::string(TWPath::lastComponent(volume.path)), volume.path });
    }
    if (view_)
        view_->reloadTable();
    if (sheetIsOpen_)
        look();
}

bool TWVolumesWindowController::setActive(int row, bool active)
{
    auto& record = (*volumesArray_)[static_cast<std::size_t>(row)];
    if (active && !TWText::isValidUTF8(record.volumePath)) {
        if (view_)
            view_->showMessage(TWText::fill(NotText, { TWText::oneLine(record.volumePath) }));
        return false;
    }
    record.active = active;
    saved_.edit([this](auto& saved) {
        saved.clear();
        std::copy_if(volumesArray_->begin(), volumesArray_->end(), std::back_inserter(saved),
            [](const auto& each) { return each.active; });
    });
    const auto problem = saved_.write();
    if (view_)
        view_->showMessage(problem);
    return true;
}

void TWVolumesWindowController::sheetOpened()
{
    sheetIsOpen_ = true;
    updateVolumesList();
}

void TWVolumesWindowController::sheetClosed()
{
    sheetIsOpen_ = false;
    looking_.reset();
    facts_.clear();
}

void TWVolumesWindowController::look()
{
    looking_ = TWLookAtVolumes(
        context_.deletion.runLoop, context_.volumes, mounted_, [this](const TWVolumeFacts& facts) { take(facts); },
        [this] { looking_.reset(); });
}

void TWVolumesWindowController::take(const TWVolumeFacts& facts)
{
    std::erase_if(facts_, [&](const auto& known) { return known.volume.path == facts.volume.path; });
    facts_.push_back(facts);
    if (view_)
        view_->notesChanged();
}

const TWVolume* TWVolumesWindowController::mounted(int row) const
{
    const auto& path = volumesArray()[static_cast<std::size_t>(row)].volumePath;
    const auto found
        = std::find_if(mounted_.begin(), mounted_.end(), [&](const auto& volume) { return volume.path == path; });
    return found == mounted_.end() ? nullptr : &*found;
}

bool TWVolumesWindowController::isMounted(int row) const
{
    return mounted(row) != nullptr;
}

std::string TWVolumesWindowController::device(int row) const
{
    const auto* const volume = mounted(row);
    return volume ? volume->device : "";
}

// Not those of a volume that was mounted at the same path before.
const TWVolumeFacts* TWVolumesWindowController::facts(int row) const
{
    const auto* const volume = mounted(row);
    const auto found = std::find_if(
        facts_.begin(), facts_.end(), [&](const auto& known) { return volume && known.volume == *volume; });
    return found == facts_.end() ? nullptr : &*found;
}

void TWVolumesWindowController::ok()
{
    if (view_)
        view_->closeSheet();
}

void TWVolumesWindowController::help()
{
    if (view_)
        view_->openHelpAnchor(HelpAnchor);
}

#include "cleaners/TWFilesCleaner.h"

#include "cleaners/TWFilesPlanner.h"

#include <algorithm>

namespace {

constexpr auto NoActiveRules
    = "The Files cleaner is checked but there are no active rules. You should either disable the cleaner, "
      "activate some rules, or add some of your own.";
constexpr auto EmptyDictionary
    = "\n\nThe Files cleaner is setup to clear files and folders based keywords but there is nothing in "
      "the dictionary. Add some words in the dictionary or deactivate the cleaner.";
constexpr auto Started = "Deleting files and folders...";
constexpr auto Success = "All files and folders have been deleted.";
constexpr auto Failure = "Some files and/or folders could not be deleted!";

}

TWFilesCleaner::TWFilesCleaner(const TWCleanerContext& context)
    : TWDeletingCleaner(context.deletion, { Started, Success, Failure })
{
}

std::string TWFilesCleaner::validate()
{
    if (!isActive())
        return "";
    const std::vector<TWFilesRule> none;
    const auto& rules = info_.filesArray ? *info_.filesArray : none;
    std::string message;
    if (std::none_of(rules.begin(), rules.end(), [](const auto& rule) { return rule.active; }))
        message = NoActiveRules;
    // Kept on purpose: inactive rules count here too.
    const bool keywordsNeeded
        = std::any_of(rules.begin(), rules.end(), [](const auto& rule) { return rule.needsKeywords(); });
    if (keywordsNeeded && info_.wordDictionary.empty())
        message += EmptyDictionary;
    return message;
}

TWSecureMode TWFilesCleaner::secureModeNow() const
{
    return info_.securelyDeleteFiles ? info_.securelyDeleteFilesMode : TWPlainDelete;
}

std::unique_ptr<TWRunLoopHandle> TWFilesCleaner::makePlan(PlanGrown grown, PlanMade made) const
{
    TWPlan beginning;
    beginning.secureMode = secureModeNow();
    beginning.authorization = info_.useAuthorization;
    beginning.addProblems(info_.problems);
    tools().guard.renew();
    auto work = [planner = TWPathPlanner(tools().fileSystem, tools().guard.rules()), places = tools().places,
                    rules = info_.filesArray ? *info_.filesArray : std::vector<TWFilesRule>(),
                    words = info_.wordDictionary](TWPlanStream::Sink& sink) {
        TWFilesPlanner(
            planner, places, rules, words, [&](TWPlan part) { sink.put(std::move(part)); }, sink.cancellation())
            .plan();
    };
    return std::make_unique<TWPlanStream>(
        tools().runLoop, std::move(beginning), std::move(work), std::move(grown), std::move(made));
}

void TWFilesCleaner::cancel()
{
    auto* queue = fileDeleteQueue();
    if (hasJob() && !(queue && queue->running())) {
        stop();
        return;
    }
    if (queue)
        queue->terminate();
    reportTermination();
}

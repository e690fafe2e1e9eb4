#include "cleaners/TWCleaner.h"

#include "support/TWKeywordMatcher.h"
#include "support/TWText.h"

#include <utility>

namespace {

constexpr auto OneRefused = "1 item stayed, because the preview showed it as refused.";
constexpr auto SeveralRefused = "%@ items stayed, because the preview showed them as refused.";

constexpr std::size_t LinesPerTurn = 1000; // so that the window stays responsive

}

void TWCleaner::clean()
{
    if (!startJob())
        return;
    job_->stage = Stage::Planning;
    job_->planning = makePlan([this](const TWPlan& soFar) { job_->found = soFar.items.size(); },
        [this](TWPlan plan) {
            startPerforming({ std::make_shared<const TWPlan>(std::move(plan)), {}, 0, nullptr, "" });
        });
}

void TWCleaner::carryOut(TWPlannedJob planned)
{
    if (startJob())
        startPerforming(std::move(planned));
}

// Returns whether there is a job to go on with.
bool TWCleaner::startJob()
{
    endJob();
    if (!isActive_) {
        done();
        return false;
    }
    cancelled_ = false;
    job_ = std::make_shared<Job>();
    const std::weak_ptr<Job> job = job_;
    reportStarted();
    return !job.expired() && !job_->stopping;
}

void TWCleaner::startPerforming(TWPlannedJob planned)
{
    job_->stage = Stage::Performing;
    perform(std::move(planned));
}

void TWCleaner::endJob()
{
    job_.reset();
    dropJob();
}

void TWCleaner::stop()
{
    if (!job_ || job_->stage == Stage::Reporting || std::exchange(job_->stopping, true))
        return;
    cancelled_ = true;
    if (job_->stage == Stage::Performing && !job_->saying) {
        stopPerforming();
        return;
    }
    job_->planning.reset();
    job_->saying.reset();
    job_->ending = runLoop_.after(TWRunLoop::Duration(0), [this] { finish(Outcome::Failure, TWTerminatedMessage); });
}

TWProgress TWCleaner::progress() const
{
    if (!job_)
        return {};
    if (job_->stage == Stage::Performing)
        return performed();
    TWProgress progress;
    progress.items = job_->found;
    return progress;
}

void TWCleaner::sayLines(
    std::shared_ptr<const TWPlan> plan, std::size_t begin, std::size_t end, std::function<void()> then)
{
    job_->saying = std::make_unique<TWPacedSteps>(
        runLoop_, end - begin, LinesPerTurn,
        [this, plan = std::move(plan), begin](std::size_t index) { reportProgress(plan->lines[begin + index]); },
        [this, then = std::move(then)] {
            const auto call = then;
            job_->saying.reset();
            call();
        });
}

void TWCleaner::sayLines(std::vector<TWReportLine> lines, std::function<void()> then)
{
    auto plan = std::make_shared<TWPlan>();
    for (auto& line : lines)
        plan->addLine(std::move(line));
    const auto count = lines.size();
    sayLines(std::move(plan), 0, count, std::move(then));
}

void TWCleaner::finish(Outcome outcome, const std::string& text)
{
    if (!job_)
        job_ = std::make_shared<Job>();
    const std::weak_ptr<Job> job = job_;
    job_->stage = Stage::Reporting;
    if (job_->stopping)
        reportFailure(TWTerminatedMessage);
    else if (outcome == Outcome::Success)
        reportSuccess(text);
    else
        reportFailure(text);
    if (job.expired())
        return;
    job_.reset();
    done();
}

void TWCleaner::reportTermination()
{
    cancelled_ = true;
    if (!job_) {
        finish(Outcome::Failure, TWTerminatedMessage);
        return;
    }
    const std::weak_ptr<Job> job = job_;
    reportFailure(TWTerminatedMessage);
    if (!job.expired())
        done();
}

bool TWCleaner::stringContainsKeywords(std::string_view text) const
{
    return TWKeywordMatcher(wordDictionary()).matches(text);
}

void TWCleaner::done()
{
    if (delegate_)
        delegate_->cleanerFinished(*this);
}

std::vector<TWReportLine> TWCleaner::refusedLines(std::uint64_t items)
{
    if (items == 0)
        return {};
    return { items == 1 ? OneRefused : TWText::fill(SeveralRefused, { TWText::number(items) }) };
}

void TWCleaner::reportStarted(std::optional<std::string> text)
{
    report(startedMessageString_, std::move(text), &TWCleanerDelegate::cleanerStarted);
}

void TWCleaner::reportProgress(const TWReportLine& line)
{
    progressPath_ = line.path;
    report(progressMessageString_, line.text, &TWCleanerDelegate::cleanerProgress);
}

void TWCleaner::reportSuccess(std::optional<std::string> text)
{
    report(successMessageString_, std::move(text), &TWCleanerDelegate::cleanerSuccess);
}

void TWCleaner::reportFailure(std::optional<std::string> text)
{
    report(failureMessageString_, std::move(text), &TWCleanerDelegate::cleanerFailure);
}

void TWCleaner::report(
    std::string& field, std::optional<std::string> text, void (TWCleanerDelegate::*operation)(TWCleaner&))
{
    if (text)
        field = std::move(*text);
    if (delegate_)
        (delegate_->*operation)(*this);
}

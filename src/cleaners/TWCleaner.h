#pragma once

#include "support/TWKeywordMatcher.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

class TWCleaner;

// Hears of a cleaner's job. The text of a report is read from the cleaner at the moment of the call. All calls come on
// the main thread.
class TWCleanerDelegate {
public:
    virtual void cleanerStarted(TWCleaner&) { }
    virtual void cleanerFinished(TWCleaner&) { } // over, whatever its outcome; the next job may start
    virtual void cleanerSuccess(TWCleaner&) { }
    virtual void cleanerFailure(TWCleaner&) { }
    virtual void cleanerProgress(TWCleaner&) { }

protected:
    ~TWCleanerDelegate() = default;
};

// One of the eight jobs of a run. The owner sets isActive and the concrete cleaner's info, asks validate(), calls
// clean(), and then hears of the job only through the delegate: started, any number of progress reports, one success or
// failure, one finished. An inactive cleaner only finishes. Main thread.
class TWCleaner {
public:
    virtual ~TWCleaner() = default;

    void setDelegate(TWCleanerDelegate* delegate) { delegate_ = delegate; }
    TWCleanerDelegate* delegate() const { return delegate_; }
    bool isActive() const { return isActive_; }
    void setIsActive(bool isActive) { isActive_ = isActive; }
    bool cancelled() const { return cancelled_; }
    void setCancelled(bool cancelled) { cancelled_ = cancelled; }

    const std::string& startedMessageString() const { return startedMessageString_; }
    const std::string& progressMessageString() const { return progressMessageString_; }
    const std::string& successMessageString() const { return successMessageString_; }
    const std::string& failureMessageString() const { return failureMessageString_; }
    void setStartedMessageString(std::string text) { startedMessageString_ = std::move(text); }
    void setProgressMessageString(std::string text) { progressMessageString_ = std::move(text); }
    void setSuccessMessageString(std::string text) { successMessageString_ = std::move(text); }
    void setFailureMessageString(std::string text) { failureMessageString_ = std::move(text); }

    // "" when all is well or the cleaner is not active, else one warning for the user.
    virtual std::string validate() { return ""; }

    // Starts the job. Safe also while an earlier job of this cleaner is going on: that one ends silently.
    virtual void clean() = 0;

    // Ends a job that is going on as soon as possible: what was begun is checked and reported, nothing further is
    // begun. The job's failure report (with cancelled set) and finish follow, possibly within this call. Nothing when
    // no job is going on.
    virtual void stop() { }

    // Case-insensitive search for any word of the dictionary anywhere in the text; see TWKeywordMatcher. False without
    // words.
    bool stringContainsKeywords(std::string_view text) const { return keywords_ && keywords_->matches(text); }

protected:
    void done();

    // With a text, that text replaces the stored one; without, the stored text is what the delegate finds.
    void reportStarted(std::optional<std::string> text = std::nullopt);
    void reportProgress(std::optional<std::string> text = std::nullopt);
    void reportSuccess(std::optional<std::string> text = std::nullopt);
    void reportFailure(std::optional<std::string> text = std::nullopt);

    // The words of the coming job; called where a concrete cleaner takes its info.
    void setKeywords(const std::vector<std::string>& words)
    {
        keywords_ = std::make_shared<const TWKeywordMatcher>(words);
    }

    // For background work, which must not depend on this cleaner's life. May be absent.
    const std::shared_ptr<const TWKeywordMatcher>& keywords() const { return keywords_; }

private:
    void report(std::string& field, std::optional<std::string> text, void (TWCleanerDelegate::*operation)(TWCleaner&));

    TWCleanerDelegate* delegate_ = nullptr;
    bool isActive_ = true;
    bool cancelled_ = false;
    std::string startedMessageString_;
    std::string progressMessageString_;
    std::string successMessageString_;
    std::string failureMessageString_;
    std::shared_ptr<const TWKeywordMatcher> keywords_;
};

// What a job says that was stopped before its end.
inline constexpr auto TWTerminatedMessage = "The cleaner was terminated before its job was finished!";

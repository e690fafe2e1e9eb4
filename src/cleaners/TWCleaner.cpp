#include "cleaners/TWCleaner.h"

void TWCleaner::done()
{
    if (delegate_)
        delegate_->cleanerFinished(*this);
}

void TWCleaner::reportStarted(std::optional<std::string> text)
{
    report(startedMessageString_, std::move(text), &TWCleanerDelegate::cleanerStarted);
}

void TWCleaner::reportProgress(std::optional<std::string> text)
{
    report(progressMessageString_, std::move(text), &TWCleanerDelegate::cleanerProgress);
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

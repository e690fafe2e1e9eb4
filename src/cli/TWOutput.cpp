#include "cli/TWOutput.h"

#include "platform/TWFileSystem.h"
#include "support/TWText.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr auto NotWritten = "Tidewell: the output could not be written (%@).\n";

// Between two tries.
constexpr TWRunLoop::Duration WhileReading{ 1 };
constexpr TWRunLoop::Duration WhileStanding{ 20 };

// A pipe that is ready takes PIPE_BUF bytes; a file never makes its writer wait.
std::size_t bytesAtOnce()
{
    struct stat status { };
    const bool isFile = fstat(STDOUT_FILENO, &status) == 0 && (S_ISREG(status.st_mode) || S_ISBLK(status.st_mode));
    return isFile ? std::string::npos : PIPE_BUF;
}

bool isBusy()
{
    return errno == EAGAIN || errno == EINTR;
}

// Always false. A reader that has read enough, such as head, is no news.
bool reportFailure()
{
    if (errno != EPIPE)
        std::fputs(TWText::fill(NotWritten, { TWErrorText(errno) }).c_str(), stderr);
    return false;
}

}

bool TWWriteToOutput(std::string_view text)
{
    pollfd output{ STDOUT_FILENO, POLLOUT, 0 };
    while (!text.empty()) {
        const auto written = write(STDOUT_FILENO, text.data(), text.size());
        if (written < 0 && !isBusy())
            return reportFailure();
        // A terminal that somebody has made non-blocking may take a part.
        if (written < 0)
            poll(&output, 1, -1);
        else
            text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

TWOutput::TWOutput(TWRunLoop& runLoop, std::function<void()> ready)
    : runLoop_(runLoop)
    , ready_(std::move(ready))
    , atOnce_(bytesAtOnce())
{
}

void TWOutput::write(std::string text)
{
    if (failed_)
        return;
    waiting_ = std::move(text);
    writeSome();
}

std::size_t TWOutput::waitingLines() const
{
    return static_cast<std::size_t>(std::ranges::count(waiting_, '\n'));
}

// Whole lines as far as possible, because what is left may never be written.
std::string_view TWOutput::pieceAt(std::size_t begin) const
{
    const auto piece = std::string_view(waiting_).substr(begin, atOnce_);
    const auto end = begin + piece.size() < waiting_.size() ? piece.rfind('\n') : std::string::npos;
    return piece.substr(0, end == std::string::npos ? end : end + 1);
}

void TWOutput::writeSome()
{
    pollfd output{ STDOUT_FILENO, POLLOUT, 0 };
    std::size_t done = 0;
    while (!failed_ && done < waiting_.size() && poll(&output, 1, 0) == 1) {
        const auto piece = pieceAt(done);
        const auto written = ::write(STDOUT_FILENO, piece.data(), piece.size());
        if (written < 0 && isBusy())
            break;
        failed_ = written < 0 && !reportFailure();
        done += static_cast<std::size_t>(std::max<ssize_t>(written, 0));
    }
    waiting_.erase(0, failed_ ? std::string::npos : done);
    if (isReady())
        return;
    next_ = runLoop_.after(done > 0 ? WhileReading : WhileStanding, [this] {
        writeSome();
        if (isReady())
            ready_();
    });
}

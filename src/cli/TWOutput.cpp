#include "cli/TWOutput.h"

#include "platform/TWFileSystem.h"
#include "support/TWText.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr auto NotWritten = "Tidewell: the output could not be written (%@).\n";

constexpr TWRunLoop::Duration BetweenTries{ 20 };

// A pipe that is ready takes PIPE_BUF bytes; a file never makes its writer wait.
std::size_t bytesAtOnce()
{
    struct stat status { };
    const bool isFile = fstat(STDOUT_FILENO, &status) == 0 && (S_ISREG(status.st_mode) || S_ISBLK(status.st_mode));
    return isFile ? std::string::npos : PIPE_BUF;
}

}

bool TWWriteToOutput(std::string_view text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() && std::fflush(stdout) == 0)
        return true;
    std::fputs(TWText::fill(NotWritten, { TWErrorText(errno) }).c_str(), stderr);
    return false;
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

void TWOutput::writeSome()
{
    pollfd output{ STDOUT_FILENO, POLLOUT, 0 };
    std::size_t written = 0;
    while (!failed_ && written < waiting_.size() && poll(&output, 1, 0) == 1) {
        const auto piece = std::string_view(waiting_).substr(written, atOnce_);
        failed_ = !TWWriteToOutput(piece);
        written += piece.size();
    }
    waiting_.erase(0, failed_ ? std::string::npos : written);
    if (isReady())
        return;
    next_ = runLoop_.after(BetweenTries, [this] {
        writeSome();
        if (isReady())
            ready_();
    });
}

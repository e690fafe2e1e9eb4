#include "platform/linux/TWLinuxPidfd.h"

#include <sys/syscall.h>

// The C library's own declarations of these two cannot be linked from C++ on Debian 12.

TWDescriptor TWLinuxOpenProcess(pid_t process)
{
    return TWDescriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
}

void TWLinuxSendSignal(int pidfd, int number)
{
    syscall(SYS_pidfd_send_signal, pidfd, number, nullptr, 0);
}

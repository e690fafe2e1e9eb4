#pragma once

#include "platform/posix/TWDescriptor.h"

#include <sys/types.h>

// A descriptor of a process, through which a signal never reaches a later process with the same identifier. Any thread.

// Closed, with errno set, if the process has ended or the kernel has no such descriptors.
TWDescriptor TWLinuxOpenProcess(pid_t process);

// Does nothing if the process has ended.
void TWLinuxSendSignal(int pidfd, int number);

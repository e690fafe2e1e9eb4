#pragma once

// True if the process at the other end of a connected local socket ran as this user when it connected or began to
// listen. Any thread.
bool TWLinuxPeerIsThisUser(int socket);

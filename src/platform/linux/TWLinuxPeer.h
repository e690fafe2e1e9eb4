#pragma once

// True if the program at the other end of a connected local socket ran as this user when it connected or began to
// listen.
bool TWLinuxPeerIsThisUser(int socket);

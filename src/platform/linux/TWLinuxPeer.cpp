#include "platform/linux/TWLinuxPeer.h"

#include <sys/socket.h>
#include <unistd.h>

bool TWLinuxPeerIsThisUser(int socket)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

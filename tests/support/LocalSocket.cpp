#include "tests/support/LocalSocket.h"

#include "base/FileDescriptor.h"

#include <string>
#include <sys/socket.h>
#include <sys/un.h>

namespace vocalith::test {

bool isListening(const std::filesystem::path& socket)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    socket.string().copy(address.sun_path, sizeof(address.sun_path) - 1);
    const FileDescriptor probe(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    return connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

} // namespace vocalith::test

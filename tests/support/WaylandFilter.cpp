#include "tests/support/WaylandFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>
#include <poll.h>
#include <set>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace vocalith::test {
namespace {

constexpr std::size_t kMostDescriptors = 28; // that a Wayland library sends at once
constexpr std::size_t kHeader = 8;

sockaddr_un addressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    return address;
}

FileDescriptor newSocket()
{
    return FileDescriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
}

std::uint32_t wordAt(std::string_view bytes, std::size_t position)
{
    std::uint32_t word = 0;
    if (position + sizeof(word) <= bytes.size())
        std::memcpy(&word, bytes.data() + position, sizeof(word));
    return word;
}

/// One message of the wire: the object, the number of the request or event, the arguments.
struct Message {
    explicit Message(std::string_view from)
        : object(wordAt(from, 0)), opcode(wordAt(from, 4) & 0xFFFFU), bytes(from.substr(0, wordAt(from, 4) >> 16U))
    {}
    std::uint32_t object;
    std::uint32_t opcode;
    std::string_view bytes;
};

/// Bytes and descriptors on their way.
struct Cargo {
    std::string bytes;
    std::vector<FileDescriptor> descriptors;
};

using Control = std::array<char, CMSG_SPACE(sizeof(int) * kMostDescriptors)>;

/// Not so at the end of the stream.
bool receive(int from, Cargo& cargo)
{
    std::array<char, 16384> buffer{};
    alignas(cmsghdr) Control control{};
    iovec data{buffer.data(), buffer.size()};
    msghdr header{nullptr, 0, &data, 1, control.data(), control.size(), 0};
    const auto size = recvmsg(from, &header, MSG_CMSG_CLOEXEC);
    if (size <= 0)
        return false;
    cargo.bytes.append(buffer.data(), static_cast<std::size_t>(size));
    for (auto* part = CMSG_FIRSTHDR(&header); part != nullptr; part = CMSG_NXTHDR(&header, part)) {
        for (std::size_t at = CMSG_LEN(0); part->cmsg_type == SCM_RIGHTS && at < part->cmsg_len; at += sizeof(int)) {
            int number = -1;
            std::memcpy(&number, reinterpret_cast<const char*>(part) + at, sizeof(number));
            cargo.descriptors.emplace_back(number);
        }
    }
    return true;
}

bool send(int to, std::string_view bytes, std::vector<FileDescriptor>& descriptors)
{
    while (!bytes.empty()) {
        alignas(cmsghdr) Control control{};
        const auto count = std::min(descriptors.size(), kMostDescriptors);
        iovec data{const_cast<char*>(bytes.data()), bytes.size()};
        msghdr header{nullptr, 0, &data, 1, nullptr, 0, 0};
        if (count > 0) {
            header.msg_control = control.data();
            header.msg_controllen = CMSG_SPACE(sizeof(int) * count);
            auto* const part = CMSG_FIRSTHDR(&header);
            part->cmsg_level = SOL_SOCKET;
            part->cmsg_type = SCM_RIGHTS;
            part->cmsg_len = CMSG_LEN(sizeof(int) * count);
            for (std::size_t place = 0; place < count; ++place) {
                const int number = descriptors[place].get();
                std::memcpy(CMSG_DATA(part) + place * sizeof(int), &number, sizeof(number));
            }
        }
        const auto size = sendmsg(to, &header, MSG_NOSIGNAL);
        if (size < 0)
            return false;
        descriptors.erase(descriptors.begin(), descriptors.begin() + static_cast<std::ptrdiff_t>(count));
        bytes.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

/// One program on the compositor.
class Client {
public:
    Client(FileDescriptor program, FileDescriptor compositor, const std::vector<std::string>& hidden)
        : m_program(std::move(program)), m_compositor(std::move(compositor)), m_hidden(hidden)
    {}

    int program() const { return m_program.get(); }
    int compositor() const { return m_compositor.get(); }

    bool passRequests()
    {
        return pass(m_program, m_compositor, m_requests, [this](const Message& request) {
            if (request.object == 1 && request.opcode == 1) // of the display: "get_registry"
                m_registries.insert(wordAt(request.bytes, kHeader));
            return true;
        });
    }

    bool passEvents()
    {
        return pass(m_compositor, m_program, m_events, [this](const Message& event) {
            const bool isOffer = event.opcode == 0 && m_registries.contains(event.object);
            return !isOffer || std::ranges::find(m_hidden, interfaceIn(event)) == m_hidden.end();
        });
    }

private:
    /// Of a registry's "global": its number, the length of its name with the final zero, the name.
    static std::string_view interfaceIn(const Message& event)
    {
        const auto length = wordAt(event.bytes, kHeader + 4);
        return length == 0 ? std::string_view() : event.bytes.substr(kHeader + 8, length - 1);
    }

    template <typename Passes>
    static bool pass(const FileDescriptor& from, const FileDescriptor& to, Cargo& cargo, Passes passes)
    {
        if (!receive(from.get(), cargo))
            return false;
        std::string passed;
        std::string_view rest = cargo.bytes;
        while (rest.size() >= kHeader) {
            const Message message(rest);
            if (message.bytes.size() < std::max<std::size_t>(wordAt(rest, 4) >> 16U, kHeader))
                break; // the rest of it is still to come
            if (passes(message))
                passed += message.bytes;
            rest.remove_prefix(message.bytes.size());
        }
        cargo.bytes.erase(0, cargo.bytes.size() - rest.size());
        return send(to.get(), passed, cargo.descriptors);
    }

    FileDescriptor m_program;
    FileDescriptor m_compositor;
    const std::vector<std::string>& m_hidden;
    std::set<std::uint32_t> m_registries;
    Cargo m_requests;
    Cargo m_events;
};

/// Until `end` is readable.
void serve(const std::string& display, const std::vector<std::string>& hidden, int listening, int end)
{
    std::vector<std::unique_ptr<Client>> clients;
    for (;;) {
        std::vector<pollfd> waiting{{end, POLLIN, 0}, {listening, POLLIN, 0}};
        for (const auto& client : clients) {
            waiting.push_back({client->program(), POLLIN, 0});
            waiting.push_back({client->compositor(), POLLIN, 0});
        }
        poll(waiting.data(), waiting.size(), -1);
        if (waiting[0].revents != 0)
            return;
        for (std::size_t place = clients.size(); place > 0; --place) {
            auto& client = *clients[place - 1];
            const bool isOver = (waiting[2 * place].revents != 0 && !client.passRequests()) ||
                                (waiting[2 * place + 1].revents != 0 && !client.passEvents());
            if (isOver)
                clients.erase(clients.begin() + static_cast<std::ptrdiff_t>(place - 1));
        }
        if (waiting[1].revents == 0)
            continue;
        FileDescriptor program(accept4(listening, nullptr, nullptr, SOCK_CLOEXEC));
        auto compositor = newSocket();
        const auto address = addressOf(display);
        if (connect(compositor.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0)
            clients.push_back(std::make_unique<Client>(std::move(program), std::move(compositor), hidden));
    }
}

} // namespace

WaylandFilter::WaylandFilter(const std::string& display, std::vector<std::string> hidden)
    : m_listening(newSocket()), m_end(eventfd(0, EFD_CLOEXEC))
{
    const auto address = addressOf(this->display());
    EXPECT_EQ(bind(m_listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)), 0);
    EXPECT_EQ(listen(m_listening.get(), 8), 0);
    m_thread = std::thread([display, hidden = std::move(hidden), listening = m_listening.get(), end = m_end.get()] {
        serve(display, hidden, listening, end);
    });
}

WaylandFilter::~WaylandFilter()
{
    eventfd_write(m_end.get(), 1);
    m_thread.join();
}

} // namespace vocalith::test

#pragma once

#include <unistd.h>

#include <utility>

namespace vocalith {

/// Owns one open file descriptor; -1 is none.
class UniqueFd {
public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : m_fd(fd) {}
    UniqueFd(UniqueFd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    ~UniqueFd() { reset(); }

    int get() const { return m_fd; }
    explicit operator bool() const { return m_fd >= 0; }
    void reset()
    {
        if (m_fd >= 0)
            ::close(std::exchange(m_fd, -1));
    }

private:
    int m_fd = -1;
};

} // namespace vocalith

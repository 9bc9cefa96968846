#pragma once

#include <unistd.h>

#include <utility>

namespace vocalith {

/// Owns an open file.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : m_number(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_number(std::exchange(other.m_number, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        std::swap(m_number, other.m_number);
        return *this;
    }
    ~FileDescriptor() { close(); }

    int get() const { return m_number; }
    bool isOpen() const { return m_number >= 0; }
    /// False where closing failed: network file systems tell only then that an earlier write was lost.
    bool close() { return m_number < 0 || ::close(std::exchange(m_number, -1)) == 0; }

private:
    int m_number = -1;
};

} // namespace vocalith

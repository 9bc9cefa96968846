#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

struct wl_buffer;
struct wl_shm;

namespace vocalith {

/// A picture in memory that the compositor reads. It belongs to a LayerShellSurface.
class SharedBuffer {
public:
    /// Null without memory.
    static std::unique_ptr<SharedBuffer> create(wl_shm* memory, int width, int height);
    ~SharedBuffer();
    SharedBuffer(const SharedBuffer&) = delete;
    SharedBuffer& operator=(const SharedBuffer&) = delete;

    bool isFree() const { return m_isFree; }
    bool hasSize(int width, int height) const { return width == m_width && height == m_height; }
    /// Fills it; the compositor has it from now on until it gives it back.
    wl_buffer* fill(std::span<const std::uint32_t> pixels);

private:
    SharedBuffer(int width, int height) : m_width(width), m_height(height) {}
    std::size_t size() const;
    static void release(void* data, wl_buffer* buffer);

    const int m_width;
    const int m_height;
    void* m_pixels = nullptr;
    wl_buffer* m_buffer = nullptr;
    bool m_isFree = true;
};

} // namespace vocalith

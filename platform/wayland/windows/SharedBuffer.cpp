#include "platform/wayland/windows/SharedBuffer_p.h"

#include "base/FileDescriptor.h"

#include <cstring>
#include <sys/mman.h>
#include <wayland-client.h>

namespace vocalith {

std::unique_ptr<SharedBuffer> SharedBuffer::create(wl_shm* memory, int width, int height)
{
    static constexpr wl_buffer_listener listener{.release = release};
    std::unique_ptr<SharedBuffer> buffer(new SharedBuffer(width, height));
    const auto size = buffer->size();
    const FileDescriptor file(memfd_create("vocalith-picture", MFD_CLOEXEC));
    if (!file.isOpen() || ftruncate(file.get(), static_cast<off_t>(size)) != 0)
        return nullptr;
    void* const pixels = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file.get(), 0);
    if (pixels == MAP_FAILED)
        return nullptr;
    buffer->m_pixels = pixels;
    wl_shm_pool* const pool = wl_shm_create_pool(memory, file.get(), static_cast<std::int32_t>(size));
    buffer->m_buffer = wl_shm_pool_create_buffer(pool, 0, width, height, width * 4, WL_SHM_FORMAT_ARGB8888);
    wl_shm_pool_destroy(pool);
    wl_buffer_add_listener(buffer->m_buffer, &listener, buffer.get());
    return buffer;
}

SharedBuffer::~SharedBuffer()
{
    if (m_buffer)
        wl_buffer_destroy(m_buffer);
    if (m_pixels)
        munmap(m_pixels, size());
}

std::size_t SharedBuffer::size() const
{
    return static_cast<std::size_t>(m_width) * static_cast<std::size_t>(m_height) * sizeof(std::uint32_t);
}

wl_buffer* SharedBuffer::fill(std::span<const std::uint32_t> pixels)
{
    std::memcpy(m_pixels, pixels.data(), std::min(pixels.size_bytes(), size()));
    m_isFree = false;
    return m_buffer;
}

void SharedBuffer::release(void* data, wl_buffer*)
{
    static_cast<SharedBuffer*>(data)->m_isFree = true;
}

} // namespace vocalith

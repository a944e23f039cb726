#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>

namespace Corvadine {

// Uninitialized memory for pixels, aligned to 64 bytes. A large block asks the system for large pages,
// because pages of 4 KiB would cost a sixth of a run's time. Move-only.
class TLargeMemory {
public:
    TLargeMemory() = default; // no memory

    // Throws std::bad_alloc.
    explicit TLargeMemory(std::size_t bytes);

    std::uint8_t* Data() const { return FData.get(); }
    std::size_t Size() const { return FSize; } // bytes
    std::span<std::uint8_t> Bytes() const { return { FData.get(), FSize }; }

private:
    struct TDelete {
        std::align_val_t Alignment;
        void operator()(std::uint8_t* data) const { ::operator delete(data, Alignment); }
    };

    std::unique_ptr<std::uint8_t[], TDelete> FData;
    std::size_t FSize = 0;
};

} // namespace Corvadine

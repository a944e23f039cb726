#include "base/LargeMemory.h"

#include "base/Platform.h"

namespace Corvadine {

TLargeMemory::TLargeMemory(std::size_t bytes) : FSize(bytes)
{
    constexpr std::size_t SmallAlignment = 64;
    const bool isLarge = bytes >= LargePageBytes;
    const std::size_t alignment = isLarge ? LargePageBytes : SmallAlignment;
    const std::size_t whole = (bytes + alignment - 1) / alignment * alignment;
    const TDelete destroy { std::align_val_t { alignment } };
    FData = { static_cast<std::uint8_t*>(::operator new(whole, destroy.Alignment)), destroy };
    if (isLarge)
        PreferLargePages(FData.get(), whole);
}

} // namespace Corvadine

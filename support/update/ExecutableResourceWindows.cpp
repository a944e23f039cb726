#include "support/update/ExecutableResource.h"

#include <qt_windows.h>

namespace Corvadine {

QByteArray ExecutableResource(const char* name)
{
    // 10 is RT_RCDATA. The constant itself is not used, because it is for wide characters in some builds, and
    // FindResourceA() takes none.
    const HRSRC entry = ::FindResourceA(nullptr, name, MAKEINTRESOURCEA(10));
    const HGLOBAL loaded = entry ? ::LoadResource(nullptr, entry) : nullptr;
    const void* bytes = loaded ? ::LockResource(loaded) : nullptr;
    if (!bytes)
        return {};
    return { static_cast<const char*>(bytes), static_cast<qsizetype>(::SizeofResource(nullptr, entry)) };
}

} // namespace Corvadine

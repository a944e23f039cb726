#include "support/ExecutableResource.h"

#include <qt_windows.h>

namespace Corvadine {

QByteArray ExecutableResource(const char* name)
{
    // The type as a number, since RT_RCDATA is of the other character width in some builds.
    const HRSRC entry = ::FindResourceA(nullptr, name, MAKEINTRESOURCEA(10));
    const HGLOBAL loaded = entry ? ::LoadResource(nullptr, entry) : nullptr;
    const void* bytes = loaded ? ::LockResource(loaded) : nullptr;
    if (!bytes)
        return {};
    return { static_cast<const char*>(bytes), static_cast<qsizetype>(::SizeofResource(nullptr, entry)) };
}

} // namespace Corvadine

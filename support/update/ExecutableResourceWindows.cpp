#include "support/update/ExecutableResource.h"

#include <qt_windows.h>

namespace Corvadine {

QByteArray ExecutableResource(const char* name)
{
    // 10 is the value of RT_RCDATA. In some builds the constant RT_RCDATA has a type for wide characters, and
    // FindResourceA() does not take this type.
    const HRSRC entry = ::FindResourceA(nullptr, name, MAKEINTRESOURCEA(10));
    const HGLOBAL loaded = entry ? ::LoadResource(nullptr, entry) : nullptr;
    const void* bytes = loaded ? ::LockResource(loaded) : nullptr;
    if (!bytes)
        return {};
    return { static_cast<const char*>(bytes), static_cast<qsizetype>(::SizeofResource(nullptr, entry)) };
}

} // namespace Corvadine

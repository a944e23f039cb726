#pragma once

#include <QString>

#include <string>

namespace Corvadine {

// Returns `path` as calls of Windows need it: in the form of AbsolutePath(). A long path also gets the prefix
// \\?\, which lifts the limit of 260 characters on every computer. (The manifest lifts the limit only where
// the user has allowed that.) Other paths get no prefix, because behind the prefix Windows does not adjust or
// refuse names such as "a." and "NUL". A path counts as long well below the limit, so that names can still be
// appended.
std::wstring SystemPath(const QString& path);

} // namespace Corvadine

#pragma once

#include <QString>

class QDropEvent;

// Files that the user drags here from a file manager. Such files are only taken as copies, because the file
// manager deletes a file that was moved.
namespace Corvadine {

// Returns the absolute path of the dragged file if `event` offers to copy exactly one file, and the file
// exists. Otherwise returns an empty text.
QString OfferedFile(const QDropEvent& event);

// Accepts the file of `event` as a copy. REQUIRES: OfferedFile() returned a path.
void AcceptCopy(QDropEvent& event);

} // namespace Corvadine

#pragma once

#include <QString>

class QDropEvent;

// Files that the user drags here from a file manager. They are only taken as copies, because after a move the
// file manager deletes the file.
namespace Corvadine {

// The absolute path of the dragged file, if `event` offers to copy exactly one file and that file exists.
// Otherwise an empty text.
QString OfferedFile(const QDropEvent& event);

// Accepts the file of `event` as a copy. REQUIRES: OfferedFile() returned a path.
void AcceptCopy(QDropEvent& event);

} // namespace Corvadine

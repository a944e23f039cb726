#pragma once

namespace Corvadine {

// Shows the wait cursor over the whole program. Calls are not counted, so one ShowNormalCursor() removes the
// wait cursor.
void ShowWaitCursor();

// Shows the normal cursor. Also removes a wait cursor that a failed command has left behind.
void ShowNormalCursor();

} // namespace Corvadine

#pragma once

namespace Corvadine {

// Shows the hourglass over the whole program. Calls are not counted, so one ShowNormalCursor() ends them all.
void ShowWaitCursor();

// Shows the normal cursor. Also removes a wait cursor that an earlier failed command has left.
void ShowNormalCursor();

} // namespace Corvadine

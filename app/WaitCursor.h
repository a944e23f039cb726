#pragma once

namespace Corvadine {

// The hourglass over the whole program is on or off, however often it was asked for: whoever ends a job ends
// the cursor that an earlier one has left behind as well.
void ShowWaitCursor();
void ShowNormalCursor();

} // namespace Corvadine

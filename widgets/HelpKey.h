#pragma once

#include <functional>

class QWidget;

namespace Corvadine {

// Opens the help page with the number `topic`.
using THelpRequest = std::function<void(int topic)>;

// Gives a help topic to `control` and to all controls in it that have no topic of their own.
void SetHelpTopic(QWidget& control, int topic);

// From now on F1 in `window` calls `help` with the topic of the focused control. A control without a topic
// has the topic of the nearest control around it. F1 does nothing if there is no topic or `help` is empty.
void AnswerHelpKey(QWidget& window, THelpRequest help);

} // namespace Corvadine

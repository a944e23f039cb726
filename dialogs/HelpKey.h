#pragma once

#include <functional>

class QWidget;

namespace Corvadine {

// Asks for the help's page with this number.
using THelpRequest = std::function<void(int topic)>;

// Gives a control, and what is in it, a page of the help.
void SetHelpTopic(QWidget& control, int topic);

// From now on F1 in `window` asks `help` for the topic of the control that has the keyboard focus: its own,
// or that of the nearest control around it which has one. Without any, or without `help`, nothing happens.
void AnswerHelpKey(QWidget& window, THelpRequest help);

} // namespace Corvadine

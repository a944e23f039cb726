#pragma once

#include <QObject>

#include <functional>

namespace Corvadine {

// Calls a function whenever the thread has handled all events and is about to wait. The window evaluates
// its enabling rules in this function. So the window needs no timer, and no signal for each thing that
// may change.
// REQUIRES: the function is quick, does not throw and runs no event loop.
class TIdleUpdate : public QObject {
public:
    // Also calls `update` at once, so that no control is first shown in a wrong state. The calls stop when
    // `parent` is deleted.
    TIdleUpdate(QObject* parent, const std::function<void()>& update);
};

} // namespace Corvadine

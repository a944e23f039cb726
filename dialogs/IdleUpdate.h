#pragma once

#include <QObject>

#include <functional>

namespace Corvadine {

// Calls a function whenever its thread has handled all events and is about to wait for more: the moment to
// bring enabling rules up to date, without a timer and however the state came to change.
// REQUIRES: the function is quick, does not throw and runs no event loop.
class TIdleUpdate : public QObject {
public:
    // Calls `update` once at once, so that nothing is shown in a state that the rules forbid. Ends with
    // `parent`.
    TIdleUpdate(QObject* parent, const std::function<void()>& update);
};

} // namespace Corvadine

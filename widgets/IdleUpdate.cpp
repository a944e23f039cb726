#include "widgets/IdleUpdate.h"

#include <QAbstractEventDispatcher>

namespace Corvadine {

TIdleUpdate::TIdleUpdate(QObject* parent, const std::function<void()>& update) : QObject(parent)
{
    update();
    connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock, this, update);
}

} // namespace Corvadine

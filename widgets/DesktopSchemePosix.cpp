#include "widgets/DesktopScheme.h"

#include "base/Literals.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

namespace Corvadine {

std::optional<bool> DesktopPrefersDark()
{
    // Without this address the D-Bus library would start a session bus.
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return {};
    QDBusMessage question = QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s,
        u"/org/freedesktop/portal/desktop"_s, u"org.freedesktop.portal.Settings"_s, u"Read"_s);
    question << u"org.freedesktop.appearance"_s << u"color-scheme"_s;
    constexpr int PatienceMilliseconds = 250; // the program waits for the answer before it shows its window
    const QDBusMessage answer =
        QDBusConnection::sessionBus().call(question, QDBus::Block, PatienceMilliseconds);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return {};
    QVariant value = answer.arguments().constFirst();
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) // the method Read wraps its answer twice
        value = value.value<QDBusVariant>().variant();
    constexpr uint PreferDark = 1;
    constexpr uint PreferLight = 2;
    const uint scheme = value.toUInt();
    return scheme == PreferDark || scheme == PreferLight ? std::optional(scheme == PreferDark) : std::nullopt;
}

void DarkenFrames(QGuiApplication& /*application*/) { }

} // namespace Corvadine

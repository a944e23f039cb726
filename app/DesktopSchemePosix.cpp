#include "app/DesktopScheme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

namespace Corvadine {

std::optional<bool> DesktopPrefersDark()
{
    // Without a session there is nobody to ask, and the library would start a bus of its own.
    if (qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS"))
        return {};
    QDBusMessage question = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
        QStringLiteral("/org/freedesktop/portal/desktop"), QStringLiteral("org.freedesktop.portal.Settings"),
        QStringLiteral("Read"));
    question << QStringLiteral("org.freedesktop.appearance") << QStringLiteral("color-scheme");
    constexpr int PatienceMilliseconds = 250; // the start of the program waits for the answer
    const QDBusMessage answer =
        QDBusConnection::sessionBus().call(question, QDBus::Block, PatienceMilliseconds);
    if (answer.type() != QDBusMessage::ReplyMessage || answer.arguments().isEmpty())
        return {};
    QVariant value = answer.arguments().constFirst();
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) // Read wraps it twice
        value = value.value<QDBusVariant>().variant();
    constexpr uint PreferDark = 1;
    constexpr uint PreferLight = 2;
    const uint scheme = value.toUInt();
    return scheme == PreferDark || scheme == PreferLight ? std::optional(scheme == PreferDark) : std::nullopt;
}

void DarkenFrames(QGuiApplication& /*application*/) { }

} // namespace Corvadine

#include "support/update/rules/Version.h"

#include "base/Literals.h"

#include <QRegularExpression>

namespace Corvadine {

QString VersionText(const TVersion& version)
{
    const QString text = u"%1.%2.%3"_s.arg(version[0]).arg(version[1]).arg(version[2]);
    return version[3] == 0 ? text : u"%1.%2"_s.arg(text).arg(version[3]);
}

std::optional<TVersion> ParseVersion(const QString& text)
{
    static const QRegularExpression Form(u"\\A[0-9]{1,5}(\\.[0-9]{1,5}){1,3}\\z"_s);
    if (!Form.match(text).hasMatch())
        return {};
    TVersion version {};
    auto number = version.begin();
    for (const QStringView digits : QStringView(text).split(u'.'))
        *number++ = digits.toInt();
    return version;
}

} // namespace Corvadine

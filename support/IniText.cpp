#include "support/IniText.h"

#include "base/Error.h"

#include <QStringConverter>

#include <algorithm>

namespace Corvadine {

namespace {

QString Decoded(const QByteArray& bytes, const QString& name)
{
    QStringDecoder utf8(QStringConverter::Utf8); // drops a byte order mark
    QString text = utf8.decode(bytes);
    if (utf8.hasError())
        throw TError(TErrorKind::BadInput, QStringLiteral("read"), name, QStringLiteral("it is not UTF-8"));
    return text;
}

bool HasControlCharacters(QStringView line)
{
    return std::any_of(line.begin(), line.end(),
        [](QChar character) { return character.category() == QChar::Other_Control && character != u'\t'; });
}

} // namespace

TIniText::TIniText(const QByteArray& bytes, const QString& name)
{
    const QString text = Decoded(bytes, name);
    const auto lines = QStringView(text).split(u'\n');
    qsizetype number = 0;
    const auto refuse = [&](const QString& reason) -> TError {
        return { TErrorKind::BadInput, QStringLiteral("read"), name,
            QStringLiteral("line %1 %2").arg(number).arg(reason) };
    };
    TSection* section = nullptr;
    for (QStringView line : lines) {
        if (++number > MostLines || line.size() > MostLineCharacters)
            throw refuse(QStringLiteral("is more than such a file holds"));
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (HasControlCharacters(line))
            throw refuse(QStringLiteral("holds a control character"));
        line = line.trimmed();
        if (line.isEmpty() || line.front() == u';' || line.front() == u'#')
            continue;
        if (line.front() == u'[' && line.back() == u']') {
            const QString title = line.mid(1, line.size() - 2).trimmed().toString().toLower();
            if (FSections.contains(title))
                throw refuse(QStringLiteral("starts a section that was there before"));
            section = &FSections[title];
            continue;
        }
        const auto equals = line.indexOf(u'=');
        if (equals <= 0 || !section)
            throw refuse(QStringLiteral("makes no sense"));
        const QString key = line.left(equals).trimmed().toString().toLower();
        if (section->contains(key))
            throw refuse(QStringLiteral("sets a key for the second time"));
        section->insert(key, line.mid(equals + 1).trimmed().toString());
    }
}

std::optional<QString> TIniText::Value(const QString& section, const QString& key) const
{
    const auto values = FSections.constFind(section);
    if (values == FSections.cend())
        return {};
    const auto value = values->constFind(key);
    return value == values->cend() ? std::nullopt : std::optional(*value);
}

} // namespace Corvadine

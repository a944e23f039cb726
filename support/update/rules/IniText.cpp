#include "support/update/rules/IniText.h"

#include "base/Error.h"
#include "base/Utf8.h"

#include <QSet>

#include <algorithm>

namespace Corvadine {

namespace {

QString Decoded(const QByteArray& bytes, const QString& name)
{
    const std::optional<QString> text =
        DecodeUtf8(bytes.startsWith(Utf8Mark) ? bytes.mid(Utf8Mark.size()) : bytes);
    if (!text)
        throw TError(TErrorKind::BadInput, u"read"_s, name, u"it is not UTF-8"_s);
    return *text;
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
        return { TErrorKind::BadInput, u"read"_s, name, u"line %1 %2"_s.arg(number).arg(reason) };
    };
    QSet<QString> sections;
    QString section;
    for (QStringView line : lines) {
        if (++number > MostLines || line.size() > MostLineCharacters)
            throw refuse(u"is more than such a file holds"_s);
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (HasControlCharacters(line))
            throw refuse(u"holds a control character"_s);
        line = line.trimmed();
        if (line.isEmpty() || line.front() == u';' || line.front() == u'#')
            continue;
        if (line.front() == u'[' && line.back() == u']') {
            section = line.mid(1, line.size() - 2).trimmed().toString().toLower();
            if (sections.contains(section))
                throw refuse(u"starts a section that was there before"_s);
            sections.insert(section);
            continue;
        }
        const auto equals = line.indexOf(u'=');
        if (equals <= 0 || sections.isEmpty())
            throw refuse(u"makes no sense"_s);
        const std::pair key(section, line.left(equals).trimmed().toString().toLower());
        if (FValues.contains(key))
            throw refuse(u"sets a key for the second time"_s);
        FValues.insert(key, line.mid(equals + 1).trimmed().toString());
    }
}

std::optional<QString> TIniText::Value(const QString& section, const QString& key) const
{
    const auto value = FValues.constFind({ section, key });
    return value == FValues.cend() ? std::nullopt : std::optional(*value);
}

} // namespace Corvadine

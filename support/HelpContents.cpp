#include "support/HelpContents.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

namespace Corvadine {

namespace {

// Of a start tag's text; names in lower case.
QHash<QString, QString> AttributesOf(const QString& tag)
{
    static const QRegularExpression Attribute(QStringLiteral("(\\w+)\\s*=\\s*\"([^\"]*)\""));
    QHash<QString, QString> attributes;
    for (auto matches = Attribute.globalMatch(tag); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        attributes.insert(match.captured(1).toLower(), match.captured(2));
    }
    return attributes;
}

QString WithoutEntities(QString text)
{
    return text.replace(QLatin1String("&quot;"), QLatin1String("\""))
        .replace(QLatin1String("&lt;"), QLatin1String("<"))
        .replace(QLatin1String("&gt;"), QLatin1String(">"))
        .replace(QLatin1String("&amp;"), QLatin1String("&"));
}

class TContentsReader {
public:
    void Take(const QString& tag, const QString& text)
    {
        if (tag == QLatin1String("ul")) {
            ++FDepth;
        } else if (tag == QLatin1String("/ul")) {
            --FDepth;
        } else if (tag == QLatin1String("object")) {
            FIsEntry = AttributesOf(text).value(QStringLiteral("type")) == QLatin1String("text/sitemap");
            FEntry = {};
        } else if (tag == QLatin1String("param")) {
            TakeParameter(AttributesOf(text));
        } else if (tag == QLatin1String("/object") && FIsEntry) {
            TakeEntry();
        }
    }

    std::vector<THelpEntry> Entries;

private:
    void TakeParameter(const QHash<QString, QString>& attributes)
    {
        const QString name = attributes.value(QStringLiteral("name"));
        const QString value = WithoutEntities(attributes.value(QStringLiteral("value")));
        if (name == QLatin1String("Name"))
            FEntry.Name = value;
        else if (name == QLatin1String("Local") && !value.isEmpty())
            FEntry.Page = value.startsWith(u'/') ? value : u'/' + value;
    }

    void TakeEntry()
    {
        FIsEntry = false;
        if (FEntry.Name.isEmpty())
            return;
        constexpr int MostLevels = 16; // whoever shows them recurses
        const int deepest = Entries.empty() ? 0 : std::min(Entries.back().Level + 1, MostLevels - 1);
        FEntry.Level = std::clamp(FDepth - 1, 0, deepest);
        Entries.push_back(FEntry);
    }

    int FDepth = 0;
    bool FIsEntry = false;
    THelpEntry FEntry;
};

} // namespace

std::vector<THelpEntry> ParseHelpContents(const QByteArray& file)
{
    static const QRegularExpression Tag(
        QStringLiteral("<(/?(?:ul|object|param))\\b([^>]*)>"), QRegularExpression::CaseInsensitiveOption);
    TContentsReader reader;
    for (auto matches = Tag.globalMatch(QString::fromUtf8(file)); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        reader.Take(match.captured(1).toLower(), match.captured(2));
    }
    return std::move(reader.Entries);
}

} // namespace Corvadine

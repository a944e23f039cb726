#include "support/help/HelpContents.h"

#include "base/Literals.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

namespace Corvadine {

namespace {

// Returns the attributes in the text of a start tag, with their names in lower case.
QHash<QString, QString> AttributesOf(const QString& tag)
{
    static const QRegularExpression Attribute(u"(\\w+)\\s*=\\s*\"([^\"]*)\""_s);
    QHash<QString, QString> attributes;
    for (auto matches = Attribute.globalMatch(tag); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        attributes.insert(match.captured(1).toLower(), match.captured(2));
    }
    return attributes;
}

QString WithoutEntities(QString text)
{
    return text.replace("&quot;"_L1, "\""_L1)
        .replace("&lt;"_L1, "<"_L1)
        .replace("&gt;"_L1, ">"_L1)
        .replace("&amp;"_L1, "&"_L1);
}

class TContentsReader {
public:
    void Take(const QString& tag, const QString& text)
    {
        if (tag == "ul"_L1) {
            ++FDepth;
        } else if (tag == "/ul"_L1) {
            --FDepth;
        } else if (tag == "object"_L1) {
            FIsEntry = AttributesOf(text).value(u"type"_s) == "text/sitemap"_L1;
            FEntry = {};
        } else if (tag == "param"_L1) {
            TakeParameter(AttributesOf(text));
        } else if (tag == "/object"_L1 && FIsEntry) {
            TakeEntry();
        }
    }

    std::vector<THelpEntry> Entries;

private:
    void TakeParameter(const QHash<QString, QString>& attributes)
    {
        const QString name = attributes.value(u"name"_s);
        const QString value = WithoutEntities(attributes.value(u"value"_s));
        if (name == "Name"_L1)
            FEntry.Name = value;
        else if (name == "Local"_L1 && !value.isEmpty())
            FEntry.Page = value.startsWith(u'/') ? value : u'/' + value;
    }

    void TakeEntry()
    {
        FIsEntry = false;
        if (FEntry.Name.isEmpty())
            return;
        constexpr int MostLevels = 16; // more levels could exhaust the stack, because Qt's tree recurses
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
        u"<(/?(?:ul|object|param))\\b([^>]*)>"_s, QRegularExpression::CaseInsensitiveOption);
    TContentsReader reader;
    for (auto matches = Tag.globalMatch(QString::fromUtf8(file)); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        reader.Take(match.captured(1).toLower(), match.captured(2));
    }
    return std::move(reader.Entries);
}

} // namespace Corvadine

#include "project/ProjectDocument.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace Corvadine {

namespace {

const QString ReadAttempt = u"read the project file"_s;

// The levels of MSBuild XML: <Project> has depth 1, <PropertyGroup> 2, the properties in it 3.
constexpr int GroupDepth = 2;
constexpr int PropertyDepth = 3;

// Whether XML can hold `text` (production 2 of https://www.w3.org/TR/xml/#charsets). All characters above
// U+FFFF are allowed.
bool IsXmlText(const QString& text)
{
    return text.isValidUtf16() && std::none_of(text.cbegin(), text.cend(), [](QChar unit) {
        const bool isWhiteSpace = unit == u'\t' || unit == u'\n' || unit == u'\r';
        return (unit < QChar(u' ') && !isWhiteSpace) || unit.unicode() >= 0xFFFE;
    });
}

// Escapes `text` for XML. Line ends and tabs become references too, because a reader may turn plain line ends
// and tabs into other white space.
QString Escaped(const QString& text, bool asciiOnly)
{
    QString escaped;
    for (const char32_t character : text.toUcs4()) {
        if (character == U'&')
            escaped += "&amp;"_L1;
        else if (character == U'<')
            escaped += "&lt;"_L1;
        else if (character == U'>')
            escaped += "&gt;"_L1;
        else if (character < 0x20 || (asciiOnly && character > 0x7E))
            escaped += u"&#%1;"_s.arg(quint32 { character });
        else
            escaped += QString::fromUcs4(&character, 1);
    }
    return escaped;
}

// Whether all ASCII characters of `name` may stand in the name of an element or attribute.
bool IsName(QStringView name)
{
    return std::all_of(name.cbegin(), name.cend(), [](QChar character) {
        return character.unicode() >= 0x80 || character.isLetterOrNumber() || u"_:-."_s.contains(character);
    });
}

// Checks the reader's last token for faults that the reader accepts. Makes the reader fail if there is such a
// fault. `depth` is the depth of the innermost open element, or 0 if no element is open.
void CheckStrictly(QXmlStreamReader& reader, int depth)
{
    const auto attributes = reader.attributes();
    const auto isNamed = [](const QXmlStreamAttribute& attribute) {
        return IsName(attribute.qualifiedName());
    };
    if (reader.isDTD() && depth > 0)
        reader.raiseError(u"Error parsing document type declaration"_s);
    else if (!IsName(reader.qualifiedName()))
        reader.raiseError(u"Error parsing start element tag"_s);
    else if (!std::all_of(attributes.cbegin(), attributes.cend(), isNamed))
        reader.raiseError(u"Error parsing element attribute"_s);
}

} // namespace

TProjectDocument::TProjectDocument(const QByteArray& bytes, const QString& file)
    : FFile(file), FText(DecodeText(bytes, ReadAttempt, file))
{
    if (FText.Text.size() == FText.Start)
        throw Refusal(ReadAttempt, u"it is empty"_s);
    ReadElements();
}

QString TProjectDocument::ProjectGuid() const
{
    const auto guid = std::find_if(FElements.cbegin(), FElements.cend(),
        [](const TElement& element) { return element.Name == "ProjectGuid"_L1; });
    return guid == FElements.cend() ? QString() : guid->Text.trimmed();
}

std::vector<TElementChange> TProjectDocument::SetText(const QString& id, const QString& text)
{
    if (!IsXmlText(text))
        throw Refusal(
            u"edit the project file"_s, u"the text for %1 has a character that XML cannot hold"_s.arg(id));

    std::vector<TElementChange> changes;
    for (TElement& element : FElements) {
        if (element.Name != id)
            continue;
        const bool differs = !IsCertain(element) || element.Text != text;
        element.NewText = differs ? std::optional(text) : std::nullopt;
        changes.push_back({ id, LineOf(element), element.Text, text, differs });
    }
    return changes;
}

QByteArray TProjectDocument::Bytes() const
{
    const QStringView before = FText.Text;
    QString edited;
    qsizetype copied = 0;
    for (const TElement& element : FElements) {
        if (!element.NewText)
            continue;
        edited += before.sliced(copied, element.Begin - copied);
        edited += Replacement(element);
        copied = element.End;
    }
    edited += before.sliced(copied);

    // A damaged project file would be the worst fault for the user, so the result is read back.
    QByteArray bytes = EncodeText(edited, FText.Encoding);
    if (!TProjectDocument(bytes, FFile).IsResultOf(*this))
        throw Refusal(u"edit the project file"_s, u"the result does not read back"_s);
    return bytes;
}

void TProjectDocument::ReadElements()
{
    // The reader gets text, not bytes, so it ignores the encoding that the XML declaration names.
    QXmlStreamReader reader(FText.Text.sliced(FText.Start));
    reader.setNamespaceProcessing(false); // accepts prefixes that are not declared
    const auto offset = [&] { return FText.Start + reader.characterOffset(); };
    int depth = 0;
    bool isInGroup = false; // whether the last element at GroupDepth is a PropertyGroup
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::DTD && reader.text().contains("<!ENTITY"_L1))
            throw Refusal(ReadAttempt, u"its DOCTYPE declares entities"_s);
        CheckStrictly(reader, depth);
        if (token == QXmlStreamReader::StartElement) {
            ++FElementCount;
            ++depth;
            if (depth == GroupDepth)
                isInGroup = reader.qualifiedName() == "PropertyGroup"_L1;
            else if (isInGroup && depth == PropertyDepth)
                FElements.push_back({ reader.qualifiedName().toString(), {}, offset(), offset() });
            else if (isInGroup)
                ++FElements.back().InnerCount;
        } else if (token == QXmlStreamReader::EndElement) {
            if (isInGroup && depth == PropertyDepth)
                CloseElement(FElements.back(), offset());
            --depth;
        } else if (isInGroup && depth == PropertyDepth) {
            if (token == QXmlStreamReader::Characters)
                FElements.back().Text += reader.text();
            else if (token == QXmlStreamReader::EntityReference) // declared in an external file
                FElements.back().Text += u"&%1;"_s.arg(reader.name());
        }
    }
    if (!reader.hasError())
        return;
    QString reason = reader.errorString();
    if (reason.endsWith(u'.'))
        reason.chop(1);
    throw Refusal(
        ReadAttempt, u"it is not well-formed XML, line %1: %2"_s.arg(reader.lineNumber()).arg(reason));
}

// Finds the characters of `element` that a new text would replace. `tagEnd` is the end of its last or
// only tag.
void TProjectDocument::CloseElement(TElement& element, qsizetype tagEnd) const
{
    const QStringView text = FText.Text;
    element.IsEmptyTag = element.Begin == tagEnd;
    if (element.IsEmptyTag) {
        element.Begin = text.first(tagEnd - 2).trimmed().end() - text.begin(); // before "/>"
        element.End = tagEnd;
    } else {
        element.End = text.lastIndexOf("</"_L1, tagEnd - 1);
    }
}

// Whether every reader of the file sees Text as the text of `element`. This is uncertain if `element`
// contains elements, or if non-ASCII characters have an unknown encoding.
bool TProjectDocument::IsCertain(const TElement& element) const
{
    const auto content = QStringView(FText.Text).sliced(element.Begin, element.End - element.Begin);
    const auto isAscii = [](QChar character) { return character.unicode() < 0x80; };
    return element.InnerCount == 0
        && (FText.Encoding != OtherEncoding || std::all_of(content.begin(), content.end(), isAscii));
}

int TProjectDocument::LineOf(const TElement& element) const
{
    const QStringView text = FText.Text;
    const auto tag = text.lastIndexOf(u'<', element.Begin - 1); // a tag cannot contain another "<"
    return static_cast<int>(1 + text.first(tag).count(u'\n'));
}

QString TProjectDocument::Replacement(const TElement& element) const
{
    const QString text = Escaped(*element.NewText, FText.Encoding == OtherEncoding);
    return element.IsEmptyTag ? u'>' + text + "</"_L1 + element.Name + u'>' : text;
}

// Whether this document, read from the result of `edited`, has the new texts and no other difference.
bool TProjectDocument::IsResultOf(const TProjectDocument& edited) const
{
    qsizetype replacedCount = 0;
    for (const TElement& element : edited.FElements)
        replacedCount += element.NewText ? element.InnerCount : 0;
    return FElementCount == edited.FElementCount - replacedCount
        && std::equal(FElements.cbegin(), FElements.cend(), edited.FElements.cbegin(),
            edited.FElements.cend(), [](const TElement& now, const TElement& before) {
                return now.Name == before.Name && now.Text == before.NewText.value_or(before.Text);
            });
}

TError TProjectDocument::Refusal(const QString& attempt, const QString& reason) const
{
    return { TErrorKind::BadInput, attempt, FFile, reason };
}

} // namespace Corvadine

#include "project/ProjectDocument.h"

#include <QXmlStreamReader>

#include <pugixml.hpp>

#include <algorithm>
#include <cassert>
#include <cstring>

namespace Corvadine {

namespace {

const QString ReadAttempt = QStringLiteral("read the project file");

TError NotWellFormed(const QString& file, qint64 line, const QString& reason)
{
    return { TErrorKind::BadInput, ReadAttempt, file,
        QStringLiteral("it is not well-formed XML, line %1: %2").arg(line).arg(reason) };
}

// pugixml finds our way about but lets much pass (several document elements, a bare "&", a NUL that hides the
// rest), so a strict reader looks first. Returns the number of elements. Throws TError(BadInput).
qsizetype CheckWellFormed(const QByteArray& utf8, const QString& file)
{
    // Given text instead of bytes, the reader ignores the encoding that the XML declaration names.
    QXmlStreamReader reader(QString::fromUtf8(utf8));
    reader.setNamespaceProcessing(false);
    qsizetype count = 0;
    while (!reader.atEnd()) {
        const auto token = reader.readNext();
        if (token == QXmlStreamReader::StartElement)
            ++count;
        if (token == QXmlStreamReader::DTD && reader.text().contains(QLatin1String("<!ENTITY")))
            throw TError(
                TErrorKind::BadInput, ReadAttempt, file, QStringLiteral("its DOCTYPE declares entities"));
    }
    if (!reader.hasError())
        return count;
    QString reason = reader.errorString();
    if (reason.endsWith(u'.'))
        reason.chop(1);
    throw NotWellFormed(file, reader.lineNumber(), reason);
}

// Where an element's content lies in the text.
struct TContent {
    qsizetype Begin;
    qsizetype End;
    qsizetype InnerCount;
    bool IsEmptyTag;
};

// Just enough of XML to get from an element's name to the end of its content. REQUIRES: well-formed text.
class TContentFinder {
public:
    explicit TContentFinder(const QByteArray& text) : FText(text) { }

    // `name` is the offset of the name in the start tag.
    TContent ContentOf(qsizetype name) const
    {
        const qsizetype close = TagClose(name);
        if (IsEmptyTag(close)) {
            qsizetype begin = close - 1;
            while (std::strchr(" \t\r\n", FText[begin - 1]) != nullptr)
                --begin;
            return { begin, close + 1, 0, true };
        }
        const qsizetype begin = close + 1;
        qsizetype innerCount = 0;
        qsizetype depth = 1;
        for (qsizetype at = FText.indexOf('<', begin);; at = FText.indexOf('<', at)) {
            assert(at >= 0);
            if (StartsAt(at, "</")) {
                if (--depth == 0)
                    return { begin, at, innerCount, false };
                at = TagClose(at) + 1;
            } else if (const qsizetype end = EndOfNonElement(at); end > at) {
                at = end;
            } else {
                at = TagClose(at);
                ++innerCount;
                depth += IsEmptyTag(at) ? 0 : 1;
            }
        }
    }

private:
    bool StartsAt(qsizetype at, const char* mark) const
    {
        return QByteArrayView(FText).sliced(at).startsWith(mark);
    }

    // The offset of the ">" that closes the tag around `at`.
    qsizetype TagClose(qsizetype at) const
    {
        while (FText[at] != '>') {
            if (FText[at] == '"' || FText[at] == '\'')
                at = FText.indexOf(FText[at], at + 1);
            ++at;
        }
        return at;
    }

    bool IsEmptyTag(qsizetype close) const { return FText[close - 1] == '/'; }

    // The end of the comment, CDATA section or processing instruction at `at`; `at` itself if there is none.
    qsizetype EndOfNonElement(qsizetype at) const
    {
        struct TMarks {
            const char* Open;
            const char* Close;
        };
        for (const TMarks& marks : { TMarks { "<!--", "-->" }, { "<![CDATA[", "]]>" }, { "<?", "?>" } }) {
            if (!StartsAt(at, marks.Open))
                continue;
            const auto content = at + static_cast<qsizetype>(std::strlen(marks.Open));
            return FText.indexOf(marks.Close, content) + static_cast<qsizetype>(std::strlen(marks.Close));
        }
        return at;
    }

    const QByteArray& FText;
};

// Text and CDATA directly inside `element`.
QString TextOf(const pugi::xml_node& element)
{
    QString text;
    for (const pugi::xml_node& child : element.children())
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
            text += QString::fromUtf8(child.value());
    return text;
}

bool IsAscii(QByteArrayView bytes)
{
    return std::none_of(bytes.cbegin(), bytes.cend(), [](char byte) { return (byte & 0x80) != 0; });
}

// Production 2 of https://www.w3.org/TR/xml/#charsets; what lies above the 16-bit units is all allowed.
bool IsXmlText(const QString& text)
{
    return text.isValidUtf16() && std::none_of(text.cbegin(), text.cend(), [](QChar unit) {
        const bool isWhiteSpace = unit == u'\t' || unit == u'\n' || unit == u'\r';
        return (unit < QChar(u' ') && !isWhiteSpace) || unit.unicode() >= 0xFFFE;
    });
}

QByteArray CharacterReference(char32_t character)
{
    return "&#" + QByteArray::number(quint32 { character }) + ';';
}

// Line ends and tabs as references too: written plainly, a reader may turn them into other white space.
QByteArray Escaped(const QString& text, bool asciiOnly)
{
    QByteArray escaped;
    for (const char32_t character : text.toUcs4()) {
        if (character == U'&')
            escaped += "&amp;";
        else if (character == U'<')
            escaped += "&lt;";
        else if (character == U'>')
            escaped += "&gt;";
        else if (character < 0x20 || (asciiOnly && character > 0x7E))
            escaped += CharacterReference(character);
        else
            escaped += QString::fromUcs4(&character, 1).toUtf8();
    }
    return escaped;
}

} // namespace

TProjectDocument::TProjectDocument(const QByteArray& bytes, const QString& file)
    : FFile(file), FText(DecodeText(bytes, ReadAttempt, file))
{
    if (FText.Utf8.isEmpty())
        throw Refusal(ReadAttempt, QStringLiteral("it is empty"));
    FElementCount = CheckWellFormed(FText.Utf8, file);
    IndexElements();
}

QString TProjectDocument::ProjectGuid() const
{
    const auto guid = std::find_if(FElements.cbegin(), FElements.cend(),
        [](const TElement& element) { return element.Name == QLatin1String("ProjectGuid"); });
    return guid == FElements.cend() ? QString() : guid->Text.trimmed();
}

std::vector<TElementChange> TProjectDocument::SetText(const QString& id, const QString& text)
{
    if (!IsXmlText(text))
        throw Refusal(QStringLiteral("edit the project file"),
            QStringLiteral("the text for %1 has a character that XML cannot hold").arg(id));

    std::vector<TElementChange> changes;
    for (TElement& element : FElements) {
        if (element.Name != id)
            continue;
        const bool differs = !element.IsCertain || element.Text != text;
        element.NewText = differs ? std::optional(text) : std::nullopt;
        changes.push_back({ id, static_cast<int>(element.Line), element.Text, text, differs });
    }
    return changes;
}

QByteArray TProjectDocument::Bytes() const
{
    TDecodedText edited { FText.Form, {} };
    qsizetype copied = 0;
    for (const TElement& element : FElements) {
        if (!element.NewText)
            continue;
        edited.Utf8 += QByteArrayView(FText.Utf8).sliced(copied, element.Begin - copied);
        edited.Utf8 += Replacement(element);
        copied = element.End;
    }
    edited.Utf8 += QByteArrayView(FText.Utf8).sliced(copied);

    // People trust us with the one file their project cannot do without: what we hand out has been read back.
    QByteArray bytes = EncodeText(edited);
    if (!TProjectDocument(bytes, FFile).IsResultOf(*this))
        throw Refusal(
            QStringLiteral("edit the project file"), QStringLiteral("the result does not read back"));
    return bytes;
}

void TProjectDocument::IndexElements()
{
    pugi::xml_document document;
    const auto result =
        document.load_buffer(FText.Utf8.constData(), static_cast<std::size_t>(FText.Utf8.size()),
            pugi::parse_default | pugi::parse_ws_pcdata, pugi::encoding_utf8);
    if (!result)
        throw NotWellFormed(
            FFile, 1 + FText.Utf8.first(result.offset).count('\n'), QString::fromUtf8(result.description()));

    const TContentFinder finder(FText.Utf8);
    qsizetype line = 1;
    qsizetype counted = 0;
    for (const pugi::xml_node& group : document.document_element().children("PropertyGroup")) {
        for (const pugi::xml_node& property : group.children()) {
            if (property.type() != pugi::node_element)
                continue;
            const qsizetype name = property.offset_debug();
            const TContent content = finder.ContentOf(name);
            const auto raw = QByteArrayView(FText.Utf8).sliced(content.Begin, content.End - content.Begin);
            const bool isGuess = FText.Form.Encoding == TTextForm::TEncoding::Bytes && !IsAscii(raw);
            line += std::count(FText.Utf8.cbegin() + counted, FText.Utf8.cbegin() + name, '\n');
            counted = name;
            FElements.push_back(
                { QString::fromUtf8(property.name()), TextOf(property), line, content.Begin, content.End,
                    content.InnerCount, content.IsEmptyTag, content.InnerCount == 0 && !isGuess, {} });
        }
    }
}

QByteArray TProjectDocument::Replacement(const TElement& element) const
{
    const QByteArray text = Escaped(*element.NewText, FText.Form.Encoding == TTextForm::TEncoding::Bytes);
    return element.IsEmptyTag ? '>' + text + "</" + element.Name.toUtf8() + '>' : text;
}

// Whether reading this document has found just the edits of `edited`.
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

#include "project/TextForm.h"

#include "base/Error.h"
#include "base/Utf8.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace Corvadine {

namespace {

bool StartsWith(const QByteArray& bytes, const char (&pair)[3])
{
    return bytes.startsWith(QByteArrayView(pair, 2));
}

// Whether the XML declaration names a Unicode encoding, names no encoding, or is missing.
bool DeclaresUnicode(const QByteArray& bytes)
{
    constexpr qsizetype LongestDeclaration = 256;
    QXmlStreamReader reader(QString::fromLatin1(bytes.left(LongestDeclaration)));
    reader.readNext();
    const auto encoding = reader.documentEncoding();
    return encoding.isEmpty() || encoding.startsWith("utf-"_L1, Qt::CaseInsensitive);
}

QStringConverter::Encoding EncodingOf(const QByteArray& bytes)
{
    if (StartsWith(bytes, "\xFF\xFE") || StartsWith(bytes, "<\0"))
        return QStringConverter::Utf16LE;
    if (StartsWith(bytes, "\xFE\xFF") || StartsWith(bytes, "\0<"))
        return QStringConverter::Utf16BE;
    const bool claimsUtf8 = bytes.startsWith(Utf8Mark) || DeclaresUnicode(bytes);
    return claimsUtf8 && DecodeUtf8(bytes) ? QStringConverter::Utf8 : OtherEncoding;
}

} // namespace

TDecodedText DecodeText(const QByteArray& bytes, const QString& attempt, const QString& file)
{
    const auto encoding = EncodingOf(bytes);
    const bool isUtf16 = encoding == QStringConverter::Utf16LE || encoding == QStringConverter::Utf16BE;
    if (isUtf16 && bytes.size() % 2 != 0)
        throw TError(TErrorKind::BadInput, attempt, file, u"its UTF-16 text is cut off"_s);
    const QString text = QStringDecoder(encoding, QStringConverter::Flag::ConvertInitialBom)(bytes);
    if (isUtf16 && !text.isValidUtf16())
        throw TError(TErrorKind::BadInput, attempt, file, u"it is not valid UTF-16"_s);

    if (encoding == OtherEncoding)
        return { encoding, bytes.startsWith(Utf8Mark) ? Utf8Mark.size() : 0, text };
    const auto isMark = [](QChar character) { return character == QChar::ByteOrderMark; };
    return { encoding, std::find_if_not(text.cbegin(), text.cend(), isMark) - text.cbegin(), text };
}

QByteArray EncodeText(const QString& text, QStringConverter::Encoding encoding)
{
    return QStringEncoder(encoding)(text);
}

} // namespace Corvadine

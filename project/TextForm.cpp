#include "project/TextForm.h"

#include "base/Error.h"

#include <QRegularExpression>
#include <QStringDecoder>
#include <QtEndian>

namespace Corvadine {

namespace {

using TEncoding = TTextForm::TEncoding;

QByteArray ByteOrderMark(TEncoding encoding)
{
    switch (encoding) {
    case TEncoding::Utf8:
    case TEncoding::Bytes: // what was meant to be UTF-8 and is not
        return "\xEF\xBB\xBF";
    case TEncoding::Utf16LE:
        return "\xFF\xFE";
    case TEncoding::Utf16BE:
        return "\xFE\xFF";
    }
    return {};
}

// Whether the XML declaration, if there is one, leaves it at a Unicode encoding.
bool DeclaresUnicode(const QByteArray& bytes)
{
    static const QRegularExpression Declaration(
        QStringLiteral(R"(^<\?xml\s[^>]*\bencoding\s*=\s*["']([^"']*))"));
    constexpr qsizetype LongestDeclaration = 256;
    const auto match = Declaration.match(QString::fromLatin1(bytes.left(LongestDeclaration)));
    return !match.hasMatch() || match.captured(1).startsWith(QLatin1String("utf-"), Qt::CaseInsensitive);
}

bool IsUtf8(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8);
    [[maybe_unused]] const QString text = decoder(bytes);
    return !decoder.hasError();
}

TTextForm FormOf(const QByteArray& bytes)
{
    for (const TEncoding encoding : { TEncoding::Utf16LE, TEncoding::Utf16BE })
        if (bytes.startsWith(ByteOrderMark(encoding)))
            return { encoding, true };
    if (bytes.startsWith(ByteOrderMark(TEncoding::Utf8)))
        return { IsUtf8(bytes) ? TEncoding::Utf8 : TEncoding::Bytes, true };
    if (bytes.startsWith(QByteArrayView("<\0", 2)))
        return { TEncoding::Utf16LE, false };
    if (bytes.startsWith(QByteArrayView("\0<", 2)))
        return { TEncoding::Utf16BE, false };
    return { DeclaresUnicode(bytes) && IsUtf8(bytes) ? TEncoding::Utf8 : TEncoding::Bytes, false };
}

// REQUIRES: an even number of bytes.
QString FromUtf16(const QByteArray& bytes, TEncoding encoding)
{
    QString text(bytes.size() / qsizetype { sizeof(char16_t) }, Qt::Uninitialized);
    if (encoding == TEncoding::Utf16LE)
        qFromLittleEndian<char16_t>(bytes.constData(), text.size(), text.data());
    else
        qFromBigEndian<char16_t>(bytes.constData(), text.size(), text.data());
    return text;
}

QByteArray ToUtf16(const QByteArray& utf8, TEncoding encoding)
{
    // A second byte order mark is a character like any other; QString::fromUtf8() would swallow it.
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
    const QString text = decoder(utf8);
    QByteArray bytes(text.size() * qsizetype { sizeof(char16_t) }, Qt::Uninitialized);
    if (encoding == TEncoding::Utf16LE)
        qToLittleEndian<char16_t>(text.utf16(), text.size(), bytes.data());
    else
        qToBigEndian<char16_t>(text.utf16(), text.size(), bytes.data());
    return bytes;
}

} // namespace

TDecodedText DecodeText(const QByteArray& bytes, const QString& attempt, const QString& file)
{
    const TTextForm form = FormOf(bytes);
    const QByteArray body = form.HasByteOrderMark ? bytes.mid(ByteOrderMark(form.Encoding).size()) : bytes;
    if (form.Encoding == TEncoding::Utf8)
        return { form, body };
    if (form.Encoding == TEncoding::Bytes)
        return { form, QString::fromLatin1(body).toUtf8() };

    if (body.size() % 2 != 0)
        throw TError(TErrorKind::BadInput, attempt, file, QStringLiteral("its UTF-16 text is cut off"));
    const QString text = FromUtf16(body, form.Encoding);
    if (!text.isValidUtf16())
        throw TError(TErrorKind::BadInput, attempt, file, QStringLiteral("it is not valid UTF-16"));
    return { form, text.toUtf8() };
}

QByteArray EncodeText(const TDecodedText& text)
{
    const TEncoding encoding = text.Form.Encoding;
    const QByteArray mark = text.Form.HasByteOrderMark ? ByteOrderMark(encoding) : QByteArray();
    if (encoding == TEncoding::Utf8)
        return mark + text.Utf8;
    if (encoding == TEncoding::Bytes)
        return mark + QString::fromUtf8(text.Utf8).toLatin1();
    return mark + ToUtf16(text.Utf8, encoding);
}

} // namespace Corvadine

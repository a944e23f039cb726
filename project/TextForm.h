#pragma once

#include <QByteArray>
#include <QString>
#include <QStringConverter>

namespace Corvadine {

// Stands for every encoding but UTF-8 and UTF-16. Each byte is read as the character with the same number,
// and written back as that byte. So nothing is lost, but such text may be displayed wrongly. Only ASCII can
// be added, because it is not known how the encoding writes other characters.
inline constexpr QStringConverter::Encoding OtherEncoding = QStringConverter::Latin1;

// The text of an XML file, and the form in which an edited text must be stored again.
struct TDecodedText {
    QStringConverter::Encoding Encoding; // Utf8, Utf16LE, Utf16BE or OtherEncoding
    qsizetype Start;                     // number of characters at the beginning that are byte order marks
    QString Text;                        // the whole file, including byte order marks
};

// Finds the encoding by the byte order mark, or else by the first character and the XML declaration. Bytes
// that claim to be UTF-8 but are not valid UTF-8 get OtherEncoding. Throws TError(BadInput) for UTF-16 that
// is cut off or has an unpaired surrogate. `attempt` and `file` are used in the text of that error.
TDecodedText DecodeText(const QByteArray& bytes, const QString& attempt, const QString& file);

// The opposite of DecodeText(): a text that DecodeText() gave becomes the same bytes again.
QByteArray EncodeText(const QString& text, QStringConverter::Encoding encoding);

} // namespace Corvadine

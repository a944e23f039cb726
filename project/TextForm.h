#pragma once

#include <QByteArray>
#include <QString>

namespace Corvadine {

// How the characters of an XML file are stored, so that an edited text goes back the way it came.
struct TTextForm {
    enum class TEncoding {
        Utf8,
        Utf16LE,
        Utf16BE,
        Bytes, // some other encoding: each byte is kept as it is, and only ASCII can be added
    };
    TEncoding Encoding = TEncoding::Utf8;
    bool HasByteOrderMark = false;
};

// A file's text in UTF-8 without a byte order mark. In the form Bytes each byte stands for the character of
// its number, which need not be the one that was meant.
struct TDecodedText {
    TTextForm Form;
    QByteArray Utf8;
};

// The encoding is told by the byte order mark, else by the first character and the XML declaration; bytes
// that are not the UTF-8 they pass for are taken as Bytes. Throws TError(BadInput) for UTF-16 that is cut off
// or has an unpaired surrogate; `attempt` and `file` are for that message.
TDecodedText DecodeText(const QByteArray& bytes, const QString& attempt, const QString& file);

// The opposite: what DecodeText() gave becomes the same bytes again.
QByteArray EncodeText(const TDecodedText& text);

} // namespace Corvadine

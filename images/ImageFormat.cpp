#include "images/ImageFormat.h"

#include "base/Literals.h"
#include "base/PathRules.h"

#include <QFile>
#include <QXmlStreamReader>
#include <QtEndian>

#include <string_view>

namespace Corvadine {

namespace {

using namespace std::string_view_literals;

struct TSignature {
    std::string_view Bytes; // at the start of the file
    const char* Name;
};

constexpr TSignature ReadFormats[] {
    { "\x89PNG\r\n\x1A\n"sv, "png" },
    { "\xFF\xD8\xFF"sv, "jpeg" },
    { "II*\0"sv, "tiff" },
    { "MM\0*"sv, "tiff" },
    { "II+\0"sv, "tiff" }, // BigTIFF
    { "MM\0+"sv, "tiff" },
    { "GIF87a"sv, "gif" },
    { "GIF89a"sv, "gif" },
    { "BM"sv, "bmp" },
    { "\0\0\1\0"sv, "ico" },
};

constexpr TSignature UnreadFormats[] {
    { "\x8AMNG\r\n\x1A\n"sv, "an MNG" },
    { "\x8BJNG\r\n\x1A\n"sv, "a JNG" },
    { "icns"sv, "an ICNS" },
    { "\0\0\0\x0CjP  \r\n\x87\n"sv, "a JPEG 2000" },
    { "\xFF\x4F\xFF\x51"sv, "a JPEG 2000" }, // without a container
    { "\0\0\0\x0CJXL \r\n\x87\n"sv, "a JPEG XL" },
    { "\xFF\x0A"sv, "a JPEG XL" },
    { "8BPS"sv, "a PSD" },
    { "%PDF-"sv, "a PDF" },
    { "/* XPM */"sv, "an XPM" },
};

QByteArray StartOf(QFile& file, qint64 bytes)
{
    file.seek(0);
    return file.read(bytes);
}

template <std::size_t Count>
const char* NameBySignature(const TSignature (&signatures)[Count], const QByteArray& start)
{
    for (const TSignature& signature : signatures)
        if (start.startsWith(signature.Bytes))
            return signature.Name;
    return nullptr;
}

// Whether the file is an X bitmap. An X bitmap is source code in C, and may begin with comments
// (https://www.x.org/releases/X11R7.7/doc/libX11/libX11/libX11.html, "Manipulating Bitmaps").
bool IsXbm(const QByteArray& start)
{
    return (start.startsWith("#define") || start.contains("\n#define")) && start.contains("_width");
}

// Returns the name of a PNM format (https://netpbm.sourceforge.net/doc/pnm.html). The samples may be text or
// binary. Returns null for other files.
const char* PnmName(const QByteArray& start)
{
    constexpr const char* Names[] { "pbm", "pgm", "ppm", "pbm", "pgm", "ppm" };
    const bool isPnm = start.size() >= 3 && start[0] == 'P' && start[1] >= '1' && start[1] <= '6'
        && QByteArrayView(" \t\r\n\v\f").contains(start[2]);
    return isPnm ? Names[start[1] - '1'] : nullptr;
}

// Whether the file has the container of ISO/IEC 14496-12 and names one of `brands`.
bool HasBrand(const QByteArray& start, const QByteArrayList& brands)
{
    constexpr qsizetype BrandsAt = 8;
    constexpr qsizetype BrandBytes = 4;
    if (start.size() < BrandsAt || start.mid(BrandBytes, BrandBytes) != "ftyp")
        return false;
    const auto end = std::min<qsizetype>(qFromBigEndian<quint32>(start.constData()), start.size());
    for (qsizetype at = BrandsAt; at < end; at += BrandBytes)
        if (brands.contains(start.mid(at, BrandBytes)))
            return true;
    return false;
}

bool IsSvg(const QByteArray& start, const QFile& file)
{
    if (start.startsWith("\x1F\x8B")) // gzip, so the name decides
        return HasExtension(file.fileName(), u".SVGZ"_s);
    QXmlStreamReader xml(start);
    return xml.readNextStartElement() && xml.name() == "svg"_L1;
}

// Whether the file is a TGA, version 2.0 of the format by Truevision. The signature of a TGA file stands at
// its end. Older files have no signature, so their name and their header decide.
bool IsTga(const QByteArray& start, QFile& file)
{
    constexpr auto Footer = "TRUEVISION-XFILE.\0"sv;
    file.seek(std::max<qint64>(file.size() - qint64 { Footer.size() }, 0));
    if (file.read(Footer.size()) == QByteArrayView(Footer))
        return true;
    constexpr qsizetype HeaderBytes = 18;
    if (start.size() < HeaderBytes || !HasExtension(file.fileName(), u".TGA"_s))
        return false;
    const int kind = start[2] & ~8; // without the bit for run-length encoding
    return static_cast<uchar>(start[1]) <= 1 && kind >= 1 && kind <= 3;
}

// Returns the name of a known format that is not read, or null.
const char* UnreadFormat(QFile& file)
{
    constexpr qint64 StartBytes = qint64 { 64 } * 1024; // an SVG file may begin with long comments
    const QByteArray start = StartOf(file, StartBytes);
    if (const char* name = NameBySignature(UnreadFormats, start))
        return name;
    if (HasBrand(start, { "avif", "avis" }))
        return "an AVIF";
    if (HasBrand(start, { "heic", "heix", "heim", "heis", "hevc", "hevx", "mif1", "msf1" }))
        return "a HEIC";
    if (IsSvg(start, file))
        return "an SVG";
    return IsTga(start, file) ? "a TGA" : nullptr;
}

} // namespace

QByteArray DecoderFor(QFile& file)
{
    constexpr qint64 StartBytes = 4096; // as far as Qt looks for the first line of an X bitmap
    const QByteArray start = StartOf(file, StartBytes);
    if (const char* name = NameBySignature(ReadFormats, start))
        return name;
    if (start.startsWith("RIFF") && start.mid(8, 4) == "WEBP")
        return "webp";
    if (const char* name = PnmName(start))
        return name;
    return IsXbm(start) ? "xbm" : QByteArray();
}

QString UnreadFormatReason(QFile& file)
{
    if (const char* name = UnreadFormat(file))
        return u"it is %1 file, which Corvadine does not read: export it as PNG, 1024 x 1024 or larger"_s.arg(
            QLatin1String(name));
    return u"it is not an image in a format that can be read"_s;
}

} // namespace Corvadine

#include "images/TiffSamples.h"

#include "images/ColorProfile.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QtEndian>

#include <algorithm>
#include <map>

namespace Corvadine {

namespace {

// Tags and values of a directory.
constexpr int BitsPerSample = 258;
constexpr int PhotometricInterpretation = 262;
constexpr int SamplesPerPixel = 277;
constexpr int ExtraSamples = 338;
constexpr int PhotometricRgb = 2;
constexpr int PhotometricSeparated = 5; // inks
constexpr int AssociatedAlpha = 1;
constexpr int UnassociatedAlpha = 2;

// The first directory of a TIFF file (https://www.itu.int/itudoc/itu-t/com16/tiff-fx/docs/tiff6.pdf).
class TTiffDirectory {
public:
    explicit TTiffDirectory(QByteArray file) : FFile(std::move(file)), FIsBigEndian(FFile.startsWith("MM"))
    {
        constexpr qsizetype OffsetAt = 4;
        if (!FFile.startsWith(QByteArrayView("MM\0*", 4)) && !FFile.startsWith(QByteArrayView("II*\0", 4)))
            return;
        const qsizetype start = NumberAt(OffsetAt);
        const qsizetype end = start + 2 + EntryBytes * WordAt(start);
        for (qsizetype at = start + 2; at < end && at + EntryBytes <= FFile.size(); at += EntryBytes)
            FEntries[WordAt(at)] = FFile.sliced(at, EntryBytes);
    }

    // Returns the first value of `tag`, or 0 if there is none. REQUIRES: the values of `tag` have 16 bits.
    int Value(int tag) const
    {
        const auto found = FEntries.find(tag);
        if (found == FEntries.end())
            return 0;
        constexpr quint32 MostInEntry = 2; // more values stand elsewhere
        const bool isInEntry = NumberIn(found->second, 4) <= MostInEntry;
        return isInEntry ? WordIn(found->second, 8) : WordAt(NumberIn(found->second, 8));
    }

    void SetValue(int tag, int value)
    {
        constexpr int Short = 3;
        FEntries[tag] = Word(tag) + Word(Short) + Number(1) + Word(value) + Word(0);
    }

    // Returns the file with this directory appended as its first directory.
    QByteArray File() const
    {
        QByteArray file = FFile;
        if (file.size() % 2 != 0)
            file.append('\0'); // directories begin at even positions
        file.replace(4, 4, Number(static_cast<quint32>(file.size())));
        file.append(Word(static_cast<int>(FEntries.size())));
        for (const auto& [tag, entry] : FEntries)
            file.append(entry);
        return file.append(Number(0)); // no other directory
    }

private:
    static constexpr qsizetype EntryBytes = 12; // tag, type, count, values

    int WordIn(const QByteArray& bytes, qsizetype at) const
    {
        if (at + 2 > bytes.size())
            return 0;
        const char* data = bytes.data() + at;
        return FIsBigEndian ? qFromBigEndian<quint16>(data) : qFromLittleEndian<quint16>(data);
    }

    quint32 NumberIn(const QByteArray& bytes, qsizetype at) const
    {
        if (at + 4 > bytes.size())
            return 0;
        const char* data = bytes.data() + at;
        return FIsBigEndian ? qFromBigEndian<quint32>(data) : qFromLittleEndian<quint32>(data);
    }

    int WordAt(qsizetype at) const { return WordIn(FFile, at); }
    quint32 NumberAt(qsizetype at) const { return NumberIn(FFile, at); }

    QByteArray Number(quint32 number) const
    {
        QByteArray bytes(4, '\0');
        FIsBigEndian ? qToBigEndian(number, bytes.data()) : qToLittleEndian(number, bytes.data());
        return bytes;
    }

    QByteArray Word(int word) const
    {
        return FIsBigEndian ? Number(static_cast<quint32>(word)).last(2)
                            : Number(static_cast<quint32>(word)).first(2);
    }

    QByteArray FFile;
    bool FIsBigEndian;
    std::map<int, QByteArray> FEntries; // by tag; directories are sorted by tag
};

// Brings inks into the form that InksToSrgb() needs. In `image` the inks are in the channels of QRgb, and 0
// means no ink.
void ArrangeInks(QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(image.scanLine(y));
        std::transform(row, row + image.width(), row, [](QRgb inks) {
            const auto cyan = static_cast<quint32>(qRed(inks));
            const auto magenta = static_cast<quint32>(qGreen(inks));
            const auto yellow = static_cast<quint32>(qBlue(inks));
            const auto black = static_cast<quint32>(qAlpha(inks));
            return qFromLittleEndian(~(cyan | magenta << 8 | yellow << 16 | black << 24));
        });
    }
}

} // namespace

QImage ReadTiffSamples(QIODevice& file)
{
    file.seek(0);
    TTiffDirectory directory(file.readAll());
    const int photometric = directory.Value(PhotometricInterpretation);
    const bool isStraight =
        photometric == PhotometricRgb && directory.Value(ExtraSamples) == UnassociatedAlpha;
    const bool isInks = photometric == PhotometricSeparated && directory.Value(ExtraSamples) == 0;
    if (directory.Value(BitsPerSample) != 8 || directory.Value(SamplesPerPixel) != 4
        || (!isStraight && !isInks))
        return {};
    // Qt's decoder does not change the samples of RGB with premultiplied alpha. So the directory declares all
    // samples as this form.
    directory.SetValue(PhotometricInterpretation, PhotometricRgb);
    directory.SetValue(ExtraSamples, AssociatedAlpha);
    QByteArray changed = directory.File();
    QBuffer buffer(&changed);
    QImageReader reader(&buffer, "tiff");
    reader.setAutoTransform(true);
    QImage image = reader.read();
    if (image.format() != QImage::Format_ARGB32_Premultiplied)
        return {};
    image.reinterpretAsFormat(QImage::Format_ARGB32);
    if (isStraight)
        return image;
    ArrangeInks(image);
    const QByteArray icc = image.colorSpace().iccProfile();
    image.setColorSpace({});
    return InksToSrgb(std::move(image), icc);
}

} // namespace Corvadine

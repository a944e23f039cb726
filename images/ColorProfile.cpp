#include "images/ColorProfile.h"

#include "images/Metadata.h"
#include "images/PngReader.h"

#include <lcms2.h>

#include <QColorSpace>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

namespace Corvadine {

namespace {

using TTransform = std::unique_ptr<void, decltype(&cmsDeleteTransform)>;

// The bytes of QRgb are blue, green, red, alpha. The alpha stays, because transforms leave extra channels
// alone and work in place.
constexpr cmsUInt32Number GrayOfRgb32 = COLORSPACE_SH(PT_GRAY) | EXTRA_SH(3) | CHANNELS_SH(1) | BYTES_SH(1);
constexpr cmsUInt32Number GrayOfRgba64 = COLORSPACE_SH(PT_GRAY) | EXTRA_SH(3) | CHANNELS_SH(1) | BYTES_SH(2);

bool IsDeep(const QImage& image)
{
    return image.depth() == 64;
}

TTransform ToSrgb(const TColorProfile& profile, cmsUInt32Number from, cmsUInt32Number to)
{
    const TColorProfile srgb(cmsCreate_sRGBProfile());
    // Little CMS otherwise replaces a calculation with 16 bits by a table that is less exact.
    const cmsUInt32Number precision = T_BYTES(to) == 2 ? cmsFLAGS_NOOPTIMIZE : cmsFLAGS_HIGHRESPRECALC;
    return { cmsCreateTransform(profile.get(), from, srgb.get(), to, INTENT_PERCEPTUAL,
                 cmsFLAGS_BLACKPOINTCOMPENSATION | precision),
        cmsDeleteTransform };
}

void Apply(const TTransform& transform, QImage& image)
{
    for (int y = 0; y < image.height(); ++y) {
        uchar* const row = image.scanLine(y);
        cmsDoTransform(transform.get(), row, row, static_cast<cmsUInt32Number>(image.width()));
    }
}

// Returns a row of pixels with all grays and a lattice of colors.
QImage Samples(QImage::Format format)
{
    constexpr int Sides = 17;
    QImage samples(256 + Sides * Sides * Sides, 1, QImage::Format_RGB32);
    for (int i = 0; i < 256; ++i)
        samples.setPixel(i, 0, qRgb(i, i, i));
    for (int i = 256; i < samples.width(); ++i) {
        const int place = i - 256;
        const auto level = [](int step) { return step * 255 / (Sides - 1); };
        samples.setPixel(
            i, 0, qRgb(level(place % Sides), level(place / Sides % Sides), level(place / Sides / Sides)));
    }
    return samples.convertToFormat(format);
}

// Whether `transform` changes no sample by more than 1 of 255. Such a change is only rounding.
bool ChangesNothing(const TTransform& transform, QImage::Format format)
{
    const QImage before = Samples(format);
    QImage after = before;
    Apply(transform, after);
    const auto isNear = [](int left, int right) { return std::abs(left - right) <= 1; };
    for (int i = 0; i < before.width(); ++i) {
        const QRgb left = before.pixel(i, 0);
        const QRgb right = after.pixel(i, 0);
        if (!isNear(qRed(left), qRed(right)) || !isNear(qGreen(left), qGreen(right))
            || !isNear(qBlue(left), qBlue(right)))
            return false;
    }
    return true;
}

TColorProfile OpenProfile(const QByteArray& icc)
{
    return TColorProfile(cmsOpenProfileFromMem(icc.data(), static_cast<cmsUInt32Number>(icc.size())));
}

// Returns the color whose two coordinates stand at `at` in a chunk cHRM.
cmsCIExyY PointAt(const QByteArray& chunk, qsizetype at)
{
    constexpr double Unit = 100000;
    return { qFromBigEndian<quint32>(chunk.data() + at) / Unit,
        qFromBigEndian<quint32>(chunk.data() + at + 4) / Unit, 1 };
}

// Returns the profile that the chunks gAMA and cHRM describe (https://www.w3.org/TR/png-3/#11gAMA).
TColorProfile ProfileOfPngChunks(QIODevice& file)
{
    const QByteArray gamma = ChunkOf(file, "gAMA");
    const QByteArray primaries = ChunkOf(file, "cHRM");
    const bool hasSrgbPrimaries = primaries.size() != 32 || HasSrgbPrimaries(primaries);
    const bool isTold = gamma.size() == 4 && qFromBigEndian<quint32>(gamma.data()) > 0;
    if (!isTold || !ChunkOf(file, "sRGB").isEmpty() || (IsScreenGamma(gamma) && hasSrgbPrimaries))
        return nullptr;

    cmsCIExyY white { 0.3127, 0.3290, 1 };
    cmsCIExyYTRIPLE points { { 0.64, 0.33, 1 }, { 0.30, 0.60, 1 }, { 0.15, 0.06, 1 } };
    if (!hasSrgbPrimaries) {
        white = PointAt(primaries, 0);
        points = { PointAt(primaries, 8), PointAt(primaries, 16), PointAt(primaries, 24) };
    }
    constexpr double Unit = 100000;
    const std::unique_ptr<cmsToneCurve, decltype(&cmsFreeToneCurve)> curve(
        cmsBuildGamma(nullptr, Unit / qFromBigEndian<quint32>(gamma.data())), cmsFreeToneCurve);
    const std::array curves { curve.get(), curve.get(), curve.get() };
    return TColorProfile(curve ? cmsCreateRGBProfile(&white, &points, curves.data()) : nullptr);
}

} // namespace

void TCloseProfile::operator()(void* profile) const
{
    cmsCloseProfile(profile);
}

TColorProfile ProfileOf(const QImage& image, QIODevice& file)
{
    if (ChunkOf(file, "IHDR").isEmpty())
        return OpenProfile(image.colorSpace().iccProfile());
    // Qt drops PNG profiles of kinds that Qt does not know, such as tables.
    const QByteArray chunk = ChunkOf(file, "iCCP");
    return chunk.isEmpty() ? ProfileOfPngChunks(file) : OpenProfile(ProfileInChunk(chunk));
}

void ConvertToSrgb(QImage& image, const TColorProfile& profile)
{
    image.setColorSpace({});
    if (!profile || image.isNull())
        return;
    const bool isDeep = IsDeep(image);
    const cmsUInt32Number color = isDeep ? TYPE_RGBA_16 : TYPE_BGRA_8;
    const auto space = cmsGetColorSpace(profile.get());
    const bool isGray = space == cmsSigGrayData;
    if (isGray ? !image.allGray() : space != cmsSigRgbData)
        return;
    const cmsUInt32Number gray = isDeep ? GrayOfRgba64 : GrayOfRgb32;
    const TTransform transform = ToSrgb(profile, isGray ? gray : color, color);
    if (transform && !ChangesNothing(transform, image.format()))
        Apply(transform, image);
}

QImage InksToSrgb(QImage inks, const QByteArray& icc)
{
    const TColorProfile profile = OpenProfile(icc);
    if (!profile || cmsGetColorSpace(profile.get()) != cmsSigCmykData)
        return {};
    const TTransform transform = ToSrgb(profile, TYPE_CMYK_8_REV, TYPE_BGRA_8);
    if (!transform)
        return {};
    Apply(transform, inks);
    for (int y = 0; y < inks.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(inks.scanLine(y));
        std::transform(row, row + inks.width(), row, [](QRgb pixel) { return pixel | 0xFF000000; });
    }
    inks.reinterpretAsFormat(QImage::Format_RGB32);
    return inks;
}

} // namespace Corvadine

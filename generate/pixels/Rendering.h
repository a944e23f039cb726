#pragma once

#include "generate/pixels/Composition.h"
#include "generate/pixels/RenderOptions.h"

#include <QByteArray>
#include <QImage>

#include <array>
#include <map>
#include <mutex>
#include <optional>
#include <tuple>
#include <variant>

namespace Corvadine {

// One decoded source of a run. The picture is converted to a TPixelPairImage once, when an output first
// needs this form. Read-only; several threads may use the source at the same time.
class TRenderSource {
public:
    // REQUIRES: Format_ARGB32, Format_RGB32, Format_RGBA64 or Format_RGBX64, not null.
    explicit TRenderSource(QImage image);

    // A source for filtered outputs only, which needs less memory. `hasAlpha` tells whether the file of the
    // source has an alpha channel.
    TRenderSource(TPixelPairImage pairs, bool hasAlpha);

    QSize Size() const { return FSize; } // pixels
    bool HasAlpha() const { return FHasAlpha; }

    // The picture with 8 bits per channel. REQUIRES: the source was made from a QImage.
    const QImage& Image() const { return FImage; }

    // Returns the source scaled to `size`, or the unchanged picture if it has that size already. The result
    // refers to this source. REQUIRES: the source was made from a QImage, or IsFiltered() is true for both
    // sizes and the filter.
    TFittedImage At(QSize size, TResampleFilter filter) const;

    // Returns WithAlpha(At(size, filter)). A small picture is made once and kept, because launcher icons and
    // the Windows icon have sizes in common.
    TRaster WithAlphaAt(QSize size, TResampleFilter filter) const;

    // Whether At() computes the pixels with `filter`. If not, At() copies pixels of Image().
    static bool IsFiltered(QSize source, QSize size, TResampleFilter filter);

private:
    QSize FSize;
    bool FHasAlpha;
    QImage FImage; // Format_ARGB32 or Format_RGB32, or null
    mutable std::once_flag FConverted;
    mutable std::optional<TPixelPairImage> FPixelPairs;

    struct TShared {
        std::once_flag Made;
        std::optional<TRaster> Raster;
    };
    mutable std::mutex FSharedMutex;
    mutable std::map<std::tuple<int, int, TResampleFilter>, TShared> FShared; // by width, height and filter
};

// How a picture is made from its source. Equal recipes for the same source give equal files.
struct TRecipe {
    QSize Fitted;            // pixels; size of the scaled source in the picture
    QSize Canvas;            // pixels; size of the picture
    bool KeepsAlpha = false; // false: the source is flattened onto the background

    bool operator==(const TRecipe&) const = default;
};

// Returns the recipe for fitting a source of size `source` into `box`. For a square box the picture has the
// shape of the source and, unless `isOpaque`, its transparency. For any other box the source is flattened and
// centered on a canvas as large as the box. REQUIRES: all sides at least 1.
TRecipe RecipeOf(QSize source, QSize box, bool isOpaque);

// One picture in the form that its PNG file has.
using TRendered = std::variant<TRaster, TPaletteRaster>;

// Returns the pixels of one picture. The compression of `options` has no effect. The same arguments always
// give the same pixels. Throws as ReduceColors() does.
TRendered RenderPixels(const TRenderSource& source, const TRecipe& recipe, const TRenderOptions& options);

// Returns the PNG file of one picture. The same arguments always give the same bytes. Throws as
// ReduceColors() and EncodePng() do.
QByteArray RenderPng(const TRenderSource& source, const TRecipe& recipe, const TRenderOptions& options);

// Sides in pixels of the square boxes of the Windows icon's ten images, in file order.
inline constexpr std::array<int, 10> IconSizes { 16, 24, 32, 48, 64, 72, 96, 128, 256, 512 };

// Returns the Windows icon file: the source fitted into each of the ten boxes, with its shape and
// transparency. No other render option has an effect. Throws as EncodeIco() does.
QByteArray RenderMainIcon(const TRenderSource& source, TResampleFilter filter);

// Whether any pixel is not fully opaque. An image with an alpha channel may still be opaque.
// REQUIRES: Format_ARGB32 or Format_RGB32.
bool IsTransparent(const QImage& image);

} // namespace Corvadine

#pragma once

#include "generate/Composition.h"
#include "generate/GenSettings.h"

#include <QByteArray>
#include <QImage>

#include <memory>
#include <mutex>
#include <optional>

namespace Corvadine {

// What of a source decides about the outputs' shape.
struct TSourceInfo {
    QSize Size = { 1, 1 };
    bool HasAlpha = false;
};

// One decoded source of a run. Its pixel format is converted once, when the first output needs it. Read-only
// and safe to use from several threads.
class TRenderSource {
public:
    // `image` as LoadSourceImage gives it.
    explicit TRenderSource(QImage image);

    TSourceInfo Info() const { return { FImage.size(), FImage.hasAlphaChannel() }; }

    // Whether any pixel lets something show through; having an alpha channel is not enough.
    bool IsTransparent() const;

    // The source at `size`; untouched when it has that size already.
    TFittedImage At(QSize size, TResampleFilter filter) const;

private:
    QImage FImage;
    mutable std::once_flag FConverted;
    mutable std::optional<TPixelPairImage> FPixelPairs;
};

// The sources of one run. No launch source: its outputs are rendered from the icon source.
struct TRenderSources {
    std::shared_ptr<const TRenderSource> Icon;
    std::shared_ptr<const TRenderSource> Launch;
};

// How one output comes about. Outputs of one run with equal recipes are equal byte for byte.
struct TRecipe {
    bool FromLaunch = false;
    QSize Fitted;            // the source's size in the output
    QSize Canvas;            // the output's size
    bool KeepsAlpha = false; // otherwise flattened onto the background

    bool operator==(const TRecipe&) const = default;
};

// `launch` is empty when there is no launch source; one that is a single pixel wide counts as none too.
// Throws TError(BadInput), naming the output, for one of more than MaxDecodedMebibytes.
TRecipe RecipeOf(const TGenRec& record, const TSourceInfo& icon, const std::optional<TSourceInfo>& launch);

// The PNG file of one output, from the full-size source. Square outputs keep the source's transparency (but
// for the App Store's) and, if the source is not square, its shape; all others are flattened onto the
// background and centred. Pure: the same arguments give the same bytes. REQUIRES: the source that `recipe`
// names is there.
QByteArray RenderPng(const TRenderSources& sources, const TGenSettings& settings, const TRecipe& recipe);

// The Windows icon file: the icon source at ten sizes, with its transparency and shape; output format,
// background and compression of the project play no part.
QByteArray RenderMainIcon(const TRenderSource& icon, TResampleFilter filter);

// Boxes of the ten images, in file order.
inline constexpr std::array<int, 10> IconSizes { 16, 24, 32, 48, 64, 72, 96, 128, 256, 512 };

} // namespace Corvadine

#pragma once

#include "base/Color.h"
#include "generate/Catalogue.h"
#include "generate/ResampleFilter.h"
#include "store/Project.h"

#include <QString>

namespace Corvadine {

// What a generation run needs to know beside its sources. A value: a run copies it at its start, so nothing
// that happens to the project meanwhile can mix two projects' files.
struct TGenSettings {
    TPlatforms Platforms;
    int TwoxSize = 400; // "2x Width", pixels
    TColor Background;
    TOutputFormat Format = TOutputFormat::Colors256;
    int Compression = 6; // 1 to 10
    TResampleFilter Filter = TResampleFilter::rfMitchell;
    QString OutputFolder;
};

// Full path of one output.
QString OutputPath(const TGenSettings& settings, const TGenRec& record);

} // namespace Corvadine

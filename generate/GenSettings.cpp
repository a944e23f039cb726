#include "generate/GenSettings.h"

#include "base/PathRules.h"
#include "project/ProjectPaths.h"

namespace Corvadine {

QString OutputPath(const TGenSettings& settings, const TGenRec& record)
{
    return WithTrailingDelimiter(settings.OutputFolder) + ImageFileName(record.ID);
}

} // namespace Corvadine

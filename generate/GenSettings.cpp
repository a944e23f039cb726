#include "generate/GenSettings.h"

#include "base/PathRules.h"

namespace Corvadine {

QString OutputPath(const TGenSettings& settings, const TGenRec& record)
{
    return WithTrailingDelimiter(settings.OutputFolder) + OutputFileName(record.ID);
}

} // namespace Corvadine

#include "app/StartUp.h"

#include "base/Error.h"

namespace Corvadine {

bool RunReporting(const std::function<void()>& action, const TReport& report)
{
    try {
        action();
        return true;
    } catch (const TError& error) {
        report(error.Text());
    } catch (const std::exception& error) {
        report(QString::fromUtf8(error.what()));
    }
    return false;
}

void RunStartUp(const std::vector<TStartUpStep>& steps, const TReport& report)
{
    for (const TStartUpStep& step : steps)
        if (!RunReporting(step.Run, report))
            return;
}

} // namespace Corvadine

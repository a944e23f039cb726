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

void RunStartUp(const std::vector<std::function<void()>>& steps, const TReport& report)
{
    for (const auto& step : steps)
        if (!RunReporting(step, report))
            return;
}

} // namespace Corvadine

#include "app/StartUp.h"

#include "base/Error.h"

namespace Corvadine {

void RunStartUp(const std::vector<TStartUpStep>& steps, const std::function<void(const QString&)>& report)
{
    try {
        for (const TStartUpStep& step : steps)
            step.Run();
    } catch (const TError& error) {
        report(error.Text());
    } catch (const std::exception& error) {
        report(QString::fromUtf8(error.what()));
    }
}

} // namespace Corvadine

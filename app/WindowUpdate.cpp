#include "app/WindowUpdate.h"

#include "support/ExecutableResource.h"
#include "support/InstallPlatform.h"
#include "support/UpdateEngine.h"
#include "support/UpdateHandOver.h"
#include "support/UpdateWizard.h"

namespace Corvadine {

// Engine and wizard exist only while the wizard is shown.
bool CheckForUpdates(QWidget* window, const QString& programFolder)
{
    TUpdateEngine webUpdate(LoadUpdateSettings(programFolder));
    webUpdate.setObjectName(QStringLiteral("WebUpdate1"));
    const QString executable = RunningExecutable();
    const auto startHelper = [&] { StartHelper(ExecutableResource("UPD"), programFolder, executable); };
    TUpdateWizard wizard({ webUpdate, executable, startHelper }, window);
    wizard.setObjectName(QStringLiteral("WebUpdateWizard1"));
    wizard.exec();
    return wizard.EndsProgram();
}

} // namespace Corvadine

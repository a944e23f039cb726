#include "app/WindowUpdate.h"

#include "base/Literals.h"
#include "support/update/ExecutableResource.h"
#include "support/update/UpdateEngine.h"
#include "support/update/UpdateHandOver.h"
#include "support/update/UpdateWizard.h"
#include "support/update/rules/InstallPlatform.h"

namespace Corvadine {

bool CheckForUpdates(QWidget* window, const QString& programFolder)
{
    const TUpdateFolder folder(programFolder);
    TUpdateEngine webUpdate(LoadUpdateSettings(folder));
    webUpdate.setObjectName(u"WebUpdate1"_s);
    const QString executable = RunningExecutable();
    const auto startHelper = [&] { StartHelper(ExecutableResource("UPD"), folder, executable); };
    TUpdateWizard wizard({ webUpdate, executable, startHelper }, window);
    wizard.setObjectName(u"WebUpdateWizard1"_s);
    wizard.exec();
    return wizard.EndsProgram();
}

} // namespace Corvadine

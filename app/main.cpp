#include "app/Icons.h"
#include "app/MainFrm.h"
#include "app/Theme.h"
#include "base/Error.h"
#include "base/Platform.h"
#include "dialogs/WidgetPrompts.h"
#include "support/InstallPlatform.h"
#include "support/UpdateInstaller.h"

#include <QApplication>
#include <QFileInfo>

#include <cstdio>

namespace {

// Before anything else is loaded, since it may be of the update that was cut off. The program starts all the
// same when it fails: what it needs may well be whole.
Corvadine::TRecovery RecoverInterruptedUpdate()
{
    try {
        return Corvadine::RecoverUpdate(QFileInfo(Corvadine::RunningExecutable()).path());
    } catch (const Corvadine::TError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return Corvadine::TRecovery::NotNeeded;
    }
}

} // namespace

int main(int argc, char** argv)
{
    Corvadine::PrepareProcess();
    const Corvadine::TRecovery recovery = RecoverInterruptedUpdate();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("FMX Corvadine"));
    QApplication::setApplicationDisplayName(QString());
    Corvadine::ApplyTheme(application);
    QApplication::setWindowIcon(Corvadine::ApplicationIcon());
    Corvadine::TWidgetPrompts prompts;
    if (recovery == Corvadine::TRecovery::BeingInstalled) {
        prompts.Inform(
            QStringLiteral("An update of Corvadine is being installed. If Corvadine does not start by "
                           "itself, please start it again in a minute."));
        return 0;
    }
    Corvadine::TMainForm form(QApplication::applicationDirPath(), prompts);
    prompts.SetWindow(&form);
    prompts.SetHelp([&form](int topic) { form.HelpContext(topic); });
    form.StartUp();
    form.show();
    return QApplication::exec();
}

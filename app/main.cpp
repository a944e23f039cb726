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
void RecoverInterruptedUpdate()
{
    try {
        Corvadine::RecoverUpdate(QFileInfo(Corvadine::RunningExecutable()).path());
    } catch (const Corvadine::TError& error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
}

} // namespace

int main(int argc, char** argv)
{
    Corvadine::PrepareProcess();
    RecoverInterruptedUpdate();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("FMX Corvadine"));
    QApplication::setApplicationDisplayName(QString());
    Corvadine::ApplyTheme(application);
    QApplication::setWindowIcon(Corvadine::ApplicationIcon());
    Corvadine::TWidgetPrompts prompts;
    Corvadine::TMainForm form(QApplication::applicationDirPath(), prompts);
    prompts.SetWindow(&form);
    prompts.SetHelp([&form](int topic) { form.HelpContext(topic); });
    form.StartUp();
    form.show();
    return QApplication::exec();
}

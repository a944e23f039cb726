#include "app/Icons.h"
#include "app/MainFrm.h"
#include "app/Theme.h"
#include "base/Error.h"
#include "base/Platform.h"
#include "dialogs/WidgetPrompts.h"
#include "support/InstallPlatform.h"
#include "support/UpdateHelper.h"
#include "support/UpdateInstaller.h"

#include <QApplication>
#include <QFileInfo>

namespace {

// What the window has to say before it opens, and whether it may.
struct TUpdateNews {
    QString Text;
    bool MustEnd = false;
};

// Before anything else is loaded, since it may be of the update that was cut off. The program starts all the
// same when it fails: what it needs may well be whole.
TUpdateNews RecoverInterruptedUpdate()
{
    const QString programFolder = QFileInfo(Corvadine::RunningExecutable()).path();
    try {
        if (Corvadine::RecoverUpdate(programFolder) == Corvadine::TRecovery::BeingInstalled)
            return { QStringLiteral(
                         "An update of Corvadine is being installed. If Corvadine does not start by "
                         "itself, please start it again in a minute."),
                true };
    } catch (const Corvadine::TError& error) {
        return { error.Text(), false };
    }
    return { Corvadine::TakeHelperReport(programFolder), false };
}

} // namespace

int main(int argc, char** argv)
{
    Corvadine::PrepareProcess();
    const TUpdateNews news = RecoverInterruptedUpdate();
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("FMX Corvadine"));
    QApplication::setApplicationDisplayName(QString());
    Corvadine::ApplyTheme(application);
    QApplication::setWindowIcon(Corvadine::ApplicationIcon());
    Corvadine::TWidgetPrompts prompts;
    if (!news.Text.isEmpty())
        prompts.Inform(news.Text);
    if (news.MustEnd)
        return 0;
    Corvadine::TMainForm form(QApplication::applicationDirPath(), prompts);
    prompts.SetWindow(&form);
    prompts.SetHelp([&form](int topic) { form.HelpContext(topic); });
    form.StartUp();
    form.show();
    return QApplication::exec();
}

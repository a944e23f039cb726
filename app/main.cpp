#include "app/MainFrm.h"
#include "base/Error.h"
#include "base/Platform.h"
#include "dialogs/WidgetPrompts.h"
#include "support/update/rules/InstallPlatform.h"
#include "support/update/rules/UpdateInstaller.h"
#include "widgets/Icons.h"
#include "widgets/Theme.h"

#include <QApplication>
#include <QFileInfo>

using namespace Corvadine;

namespace {

// The result of RecoverInterruptedUpdate().
struct TUpdateNews {
    QString Text;         // a message to show; empty if there is none
    bool MustEnd = false; // the program must end after the message
};

// Runs before the program loads other files, because an interrupted update may have left old files. If the
// recovery fails, the program still starts, because its own files may be intact.
TUpdateNews RecoverInterruptedUpdate()
{
    const TUpdateFolder folder(QFileInfo(RunningExecutable()).path());
    try {
        if (RecoverUpdate(folder) == TRecovery::BeingInstalled)
            return { u"An update of Corvadine is being installed. If Corvadine does not start by "
                     "itself, please start it again in a minute."_s,
                true };
    } catch (const TError& error) {
        return { error.Text(), false };
    }
    return { folder.TakeReport(), false };
}

} // namespace

int main(int argc, char** argv)
{
    PrepareProcess();
    const TUpdateNews news = RecoverInterruptedUpdate();
    QApplication application(argc, argv);
    QApplication::setApplicationName(u"FMX Corvadine"_s);
    QApplication::setApplicationDisplayName(QString());
    ApplyTheme(application);
    QApplication::setWindowIcon(ApplicationIcon());
    TWidgetPrompts prompts;
    if (!news.Text.isEmpty())
        prompts.Inform(news.Text);
    if (news.MustEnd)
        return 0;
    TMainForm form(QApplication::applicationDirPath(), prompts);
    prompts.SetWindow(&form);
    prompts.SetHelp([&form](int topic) { form.HelpContext(topic); });
    form.StartUp();
    form.show();
    return QApplication::exec();
}

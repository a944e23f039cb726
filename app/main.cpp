#include "app/Icons.h"
#include "app/MainFrm.h"
#include "app/Theme.h"
#include "base/Platform.h"
#include "dialogs/WidgetPrompts.h"

#include <QApplication>

int main(int argc, char** argv)
{
    Corvadine::PrepareProcess();
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

// Stands in for Corvadine where the tests update the program itself: recovers at its start, and hands over to
// the helper that it carries when it is asked to. What it does it notes in notes.txt in its folder.

#include "base/Error.h"
#include "support/ExecutableResource.h"
#include "support/InstallPlatform.h"
#include "support/UpdateHandOver.h"
#include "support/UpdateHelper.h"
#include "support/UpdateInstaller.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QThread>

using namespace Corvadine;

namespace {

void Note(const QString& text)
{
    QFile notes(QCoreApplication::applicationDirPath() + "/notes.txt");
    if (notes.open(QIODevice::WriteOnly | QIODevice::Append))
        notes.write(text.toUtf8() + '\n');
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QString folder = QCoreApplication::applicationDirPath();
    try {
        RecoverUpdate(folder);
        if (!QCoreApplication::arguments().contains("hand-over")) {
            Note(TakeHelperReport(folder));
            Note(QStringLiteral("started, %1 bytes").arg(QFileInfo(RunningExecutable()).size()));
            return 0;
        }
        StartHelper(ExecutableResource("UPD"), folder, RunningExecutable());
        QThread::msleep(300); // a helper that does not wait would be done by then
        Note(QStringLiteral("ends, %1 bytes").arg(QFileInfo(RunningExecutable()).size()));
        return 0;
    } catch (const TError& error) {
        Note(error.Text());
        return 1;
    }
}

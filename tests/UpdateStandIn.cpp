// This program replaces Corvadine in tests that update the program itself. At its start it calls
// RecoverUpdate(). With the argument "update", it downloads the mandatory files and then hands over to the
// helper. With the argument "hand-over", it only hands over to the helper. The executable of this program
// contains the helper. The program writes its steps to notes.txt in its folder.

#include "base/Error.h"
#include "support/update/ExecutableResource.h"
#include "support/update/UpdateEngine.h"
#include "support/update/UpdateHandOver.h"
#include "support/update/rules/InstallPlatform.h"
#include "support/update/rules/UpdateInstaller.h"

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

// Downloads the mandatory files into the staging folder. Throws TError if the download fails or no file
// is newer.
void Download(const TUpdateFolder& folder)
{
    TUpdateEngine engine(LoadUpdateSettings(folder));
    QString failure = u"nothing is newer"_s;
    const auto end = [&failure](const QString& text) {
        failure = text;
        QCoreApplication::quit();
    };
    QObject::connect(&engine, &TUpdateEngine::Failed, end);
    QObject::connect(&engine, &TUpdateEngine::Downloaded, [&end] { end({}); });
    QObject::connect(&engine, &TUpdateEngine::Checked, [&](const std::vector<TUpdateFile>& files) {
        files.empty() ? QCoreApplication::quit() : engine.Download({});
    });
    engine.Check();
    QCoreApplication::exec();
    if (!failure.isEmpty())
        throw TError(TErrorKind::Io, failure);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const TUpdateFolder folder(QCoreApplication::applicationDirPath());
    try {
        RecoverUpdate(folder);
        const QStringList arguments = QCoreApplication::arguments();
        if (arguments.contains("update")) {
            Download(folder);
        } else if (!arguments.contains("hand-over")) {
            Note(folder.TakeReport());
            Note(u"started, %1 bytes"_s.arg(QFileInfo(RunningExecutable()).size()));
            return 0;
        }
        StartHelper(ExecutableResource("UPD"), folder, RunningExecutable());
        QThread::msleep(300); // a helper that does not wait for this program would finish meanwhile
        Note(u"ends, %1 bytes"_s.arg(QFileInfo(RunningExecutable()).size()));
        return 0;
    } catch (const TError& error) {
        Note(error.Text());
        return 1;
    }
}

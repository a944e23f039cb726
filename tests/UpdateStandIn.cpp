// Stands in for Corvadine where the tests update the program itself: recovers at its start; with "update" it
// downloads what is newer first, and with that or with "hand-over" it hands over to the helper that it
// carries. What it does it notes in notes.txt in its folder.

#include "base/Error.h"
#include "support/ExecutableResource.h"
#include "support/InstallPlatform.h"
#include "support/UpdateEngine.h"
#include "support/UpdateHandOver.h"
#include "support/UpdateHelper.h"
#include "support/UpdateInstaller.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <numeric>

using namespace Corvadine;

namespace {

void Note(const QString& text)
{
    QFile notes(QCoreApplication::applicationDirPath() + "/notes.txt");
    if (notes.open(QIODevice::WriteOnly | QIODevice::Append))
        notes.write(text.toUtf8() + '\n');
}

// Stages all that is newer; throws TError if that fails or nothing is.
void Download(const QString& folder)
{
    TUpdateEngine engine(LoadUpdateSettings(folder));
    QEventLoop loop;
    QString failure;
    const auto fail = [&](const QString& text) {
        failure = text;
        loop.quit();
    };
    QObject::connect(&engine, &TUpdateEngine::Failed, &loop, fail);
    QObject::connect(&engine, &TUpdateEngine::Downloaded, &loop, &QEventLoop::quit);
    QObject::connect(&engine, &TUpdateEngine::Checked, &loop, [&](const std::vector<TUpdateItem>& items) {
        std::vector<std::size_t> all(items.size());
        std::iota(all.begin(), all.end(), std::size_t { 0 });
        if (items.empty())
            fail(QStringLiteral("nothing is newer"));
        else
            engine.Download(all);
    });
    engine.Check();
    loop.exec();
    if (!failure.isEmpty())
        throw TError(TErrorKind::Io, failure);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QString folder = QCoreApplication::applicationDirPath();
    try {
        RecoverUpdate(folder);
        const QStringList arguments = QCoreApplication::arguments();
        if (arguments.contains("update")) {
            Download(folder);
        } else if (!arguments.contains("hand-over")) {
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

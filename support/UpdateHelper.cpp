#include "support/UpdateHelper.h"

#include "base/Error.h"
#include "support/InstallPlatform.h"
#include "support/StagedUpdate.h"
#include "support/UpdateInstaller.h"
#include "support/UpdateLog.h"

#include <QCommandLineParser>
#include <QProcess>
#include <QScopeGuard>

namespace Corvadine {

namespace {

// Closing the window takes a moment; a question that another program's guard asks then may take a person.
constexpr std::chrono::minutes EndOfProgram(2);
// The old program has let go of the lock by now; another one may be looking for updates.
constexpr int LockMilliseconds = 20'000;

const QString ProgramOption = QStringLiteral("program");
const QString StartOption = QStringLiteral("start");
const QString WaitOption = QStringLiteral("wait");

bool Install(const THelperJob& job, const TUpdateLog& log)
{
    QString step = QStringLiteral("Take over the update");
    try {
        const TUpdateLock lock(job.ProgramFolder, LockMilliseconds);
        const auto dropStaging = qScopeGuard([&job] { DropStaging(job.ProgramFolder); });
        TUpdateInstaller installer(job.ProgramFolder, log);
        installer.Recover();
        const TStagedUpdate update = ReadStagedUpdate(LoadUpdateSettings(job.ProgramFolder));
        log.Write(step, QStringLiteral("the publisher's signature is good"));
        step.clear(); // from here on the installer reports for itself
        installer.Install(update, job.Executable);
        return true;
    } catch (const TError& error) {
        if (!step.isEmpty())
            log.Write(step, QStringLiteral("failed. ") + error.Text());
        return false;
    }
}

} // namespace

QStringList HelperArguments(const THelperJob& job)
{
    // One word each, so that no value can be taken for an option.
    const auto option = [](const QString& name, const QString& value) {
        return QStringLiteral("--%1=%2").arg(name, value);
    };
    return { option(ProgramOption, job.ProgramFolder), option(StartOption, job.Executable),
        option(WaitOption, QString::number(job.WaitFor)) };
}

THelperJob ParseHelperArguments(const QStringList& arguments)
{
    QCommandLineParser parser;
    for (const QString& name : { ProgramOption, StartOption, WaitOption })
        parser.addOption({ name, {}, name });
    // The parser expects the program's name in front.
    if (!parser.parse(QStringList(QString()) + arguments))
        throw TError(TErrorKind::Usage, parser.errorText());
    bool isNumber = false;
    THelperJob job { parser.value(ProgramOption), parser.value(StartOption),
        parser.value(WaitOption).toLongLong(&isNumber) };
    if (job.ProgramFolder.isEmpty() || job.Executable.isEmpty() || !isNumber || job.WaitFor <= 0)
        throw TError(TErrorKind::Usage,
            QStringLiteral("This program is started by Corvadine when it updates itself; there is nothing to "
                           "do for it otherwise."));
    return job;
}

bool RunHelper(const THelperJob& job)
{
    const TUpdateLog log(job.ProgramFolder);
    const QString wait = QStringLiteral("Wait for Corvadine to end");
    if (!WaitForProcessEnd(job.WaitFor, EndOfProgram)) {
        log.Write(wait, QStringLiteral("failed. It still runs, so nothing was replaced"));
        return false;
    }
    log.Write(wait, QStringLiteral("it has ended"));
    const bool installed = Install(job, log);
    const bool started = QProcess::startDetached(job.Executable, {}, job.ProgramFolder);
    log.Write(
        QStringLiteral("Start Corvadine again"), started ? QStringLiteral("done") : QStringLiteral("failed"));
    return installed;
}

} // namespace Corvadine

#include "support/UpdateHelper.h"

#include "base/Error.h"
#include "support/InstallPlatform.h"
#include "support/StagedUpdate.h"
#include "support/UpdateInstaller.h"
#include "support/UpdateLog.h"

#include <QCommandLineParser>
#include <QProcess>

#include <memory>

namespace Corvadine {

namespace {

// Closing the window takes a moment; a question that another program's guard asks then may take a person.
constexpr std::chrono::minutes EndOfProgram(2);
// The program lets go of the lock when its wizard closes; another one may be looking for updates.
constexpr std::chrono::seconds Patience(20);

const QString ProgramOption = QStringLiteral("program");
const QString StartOption = QStringLiteral("start");
const QString WaitOption = QStringLiteral("wait");

const QString TakeOver = QStringLiteral("Take over the update");

// None, which the log tells, if somebody else is at work.
std::unique_ptr<TUpdateLock> TakeLock(const THelperJob& job, const TUpdateLog& log)
{
    try {
        return std::make_unique<TUpdateLock>(job.ProgramFolder, Patience);
    } catch (const TError& error) {
        log.Write(TakeOver, QStringLiteral("failed. ") + error.Text());
        return {};
    }
}

bool Install(const THelperJob& job, const TUpdateLog& log)
{
    QString step = TakeOver;
    try {
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
    // Before it waits: from the program's end on, one that is started must see that it is being replaced.
    std::unique_ptr<TUpdateLock> lock = TakeLock(job, log);
    const QString wait = QStringLiteral("Wait for Corvadine to end");
    const bool ended = WaitForProcessEnd(job.WaitFor, EndOfProgram);
    log.Write(wait,
        ended ? QStringLiteral("it has ended")
              : QStringLiteral("failed. It still runs, so nothing was replaced"));
    const bool installed = ended && lock && Install(job, log);
    if (lock)
        DropStaging(job.ProgramFolder);
    lock.reset(); // or the program would see itself being replaced
    if (!ended)
        return false;
    const bool started = QProcess::startDetached(job.Executable, {}, job.ProgramFolder);
    log.Write(
        QStringLiteral("Start Corvadine again"), started ? QStringLiteral("done") : QStringLiteral("failed"));
    return installed;
}

} // namespace Corvadine

#include "support/UpdateHelper.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/InstallPlatform.h"
#include "support/StagedUpdate.h"
#include "support/UpdateInstaller.h"
#include "support/UpdateLog.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QScopeGuard>

#include <optional>

namespace Corvadine {

namespace {

// Closing the window takes a moment; a question that another program's guard asks then may take a person.
constexpr std::chrono::minutes EndOfProgram(2);
// The program lets go of the lock when its wizard closes; another one may be looking for updates.
constexpr std::chrono::seconds Patience(20);

const QString ProgramOption = QStringLiteral("program");
const QString StartOption = QStringLiteral("start");
const QString WaitOption = QStringLiteral("wait");

QString ReportPath(const QString& programFolder)
{
    return programFolder + QStringLiteral("/CorvadineUpdate.report");
}

// One update by the helper. What it throws ends the step that is being taken.
class THelperRun {
public:
    explicit THelperRun(const THelperJob& job)
        : FJob(job), FProgram(job.WaitFor, job.Executable), FLog(job.ProgramFolder)
    {
    }

    bool Run();

private:
    void Install();
    bool HasProgramEnded();
    void Report(const QString& text) const;
    void Restart() const;

    const THelperJob& FJob;
    const TOtherProcess FProgram; // before the lock, which may take longer than its number lasts
    const TUpdateLog FLog;
    QString FStep;                     // for the log; empty while the installer reports for itself
    std::optional<bool> FProgramEnded; // empty until it was waited for
};

bool THelperRun::Run()
{
    bool installed = false;
    try {
        Install();
        installed = true;
    } catch (const TError& error) {
        if (!FStep.isEmpty())
            FLog.Write(FStep, QStringLiteral("failed. ") + error.Text());
        Report(QStringLiteral("The update did not work.\n\n%1.\n\nWhat was done so far is in\n%2")
                   .arg(error.Text(), QDir::toNativeSeparators(FLog.Path())));
    }
    if (HasProgramEnded())
        Restart();
    return installed;
}

// The lock is given up in the end, or the program would see itself being replaced when it starts.
void THelperRun::Install()
{
    FStep = QStringLiteral("Take over the update");
    // Before it waits: from the program's end on, one that is started must see that it is being replaced.
    const TUpdateLock lock(FJob.ProgramFolder, Patience);
    const auto dropStaging = qScopeGuard([this] { DropStaging(FJob.ProgramFolder); });
    if (!HasProgramEnded())
        throw TError(TErrorKind::Conflict,
            QStringLiteral("Corvadine did not end for two minutes, so nothing was replaced"));
    FLog.Write(QStringLiteral("Wait for Corvadine to end"), QStringLiteral("it has ended"));
    TUpdateInstaller installer(FJob.ProgramFolder, FLog);
    installer.Recover();
    const TStagedUpdate update = ReadStagedUpdate(LoadUpdateSettings(FJob.ProgramFolder));
    FLog.Write(FStep, QStringLiteral("the publisher's signature is good"));
    FStep.clear();
    installer.Install(update, FJob.Executable);
    Report(QStringLiteral("Corvadine was updated to version %1.").arg(update.Version));
}

bool THelperRun::HasProgramEnded()
{
    if (!FProgramEnded)
        FProgramEnded = FProgram.WaitForEnd(EndOfProgram);
    return *FProgramEnded;
}

void THelperRun::Report(const QString& text) const
{
    try {
        WriteFileAtomically(ReportPath(FJob.ProgramFolder), text.toUtf8());
    } catch (const TError&) {
        // The log has it as well, if that can be written.
    }
}

void THelperRun::Restart() const
{
    const bool started = QProcess::startDetached(FJob.Executable, {}, FJob.ProgramFolder);
    FLog.Write(
        QStringLiteral("Start Corvadine again"), started ? QStringLiteral("done") : QStringLiteral("failed"));
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
    return THelperRun(job).Run();
}

QString TakeHelperReport(const QString& programFolder)
{
    const QString path = ReportPath(programFolder);
    if (!FileExists(path))
        return {};
    try {
        const QByteArray text = ReadFile(path, QStringLiteral("read the report of the update"));
        // One that cannot be removed would be shown at every start.
        return QFile::remove(path) ? QString::fromUtf8(text) : QString();
    } catch (const TError&) {
        return {};
    }
}

} // namespace Corvadine

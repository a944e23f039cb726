#include "support/update/rules/UpdateHelper.h"

#include "base/Error.h"
#include "support/update/rules/InstallPlatform.h"
#include "support/update/rules/StagedUpdate.h"
#include "support/update/rules/UpdateInstaller.h"

#include <QDir>
#include <QProcess>
#include <QScopeGuard>

#include <optional>

namespace Corvadine {

namespace {

// How long the helper waits for the end of the program. The window of the program closes within moments, but
// a debugger or security program may ask the user first.
constexpr std::chrono::minutes EndOfProgram(2);
// How long the helper waits for the lock. The program releases the lock when its wizard closes. A check by
// another copy of the program may hold the lock briefly.
constexpr std::chrono::seconds Patience(20);

// One update by the helper.
class THelperRun {
public:
    explicit THelperRun(const THelperJob& job)
        : FJob(job), FFolder(job.ProgramFolder), FProgram(job.WaitFor, job.Executable)
    {
    }

    bool Run();

private:
    void Install();
    bool HasProgramEnded();
    void Restart() const;

    const THelperJob& FJob;
    const TUpdateFolder FFolder;
    const TOtherProcess FProgram;      // made at once, because process numbers are used again
    QString FStep;                     // for the log; empty while the installer writes to the log itself
    std::optional<bool> FProgramEnded; // empty until HasProgramEnded() is called
};

bool THelperRun::Run()
{
    bool installed = false;
    try {
        Install();
        installed = true;
    } catch (const TError& error) {
        if (!FStep.isEmpty())
            FFolder.Log().Write(FStep, u"failed. "_s + error.Text());
        FFolder.WriteReport(u"The update did not work.\n\n%1.\n\nWhat was done so far is in\n%2"_s.arg(
            error.Text(), QDir::toNativeSeparators(FFolder.Log().Path())));
    }
    if (HasProgramEnded())
        Restart();
    return installed;
}

// Installs the update and then releases the lock, because the program that Restart() starts needs the lock.
void THelperRun::Install()
{
    FStep = u"Take over the update"_s;
    // The lock comes first. So a program that is started while we wait sees that an update is going on.
    const TUpdateLock lock = FFolder.AwaitLock(Patience);
    const auto dropStaging = qScopeGuard([this] { FFolder.DropStaging(); });
    if (!HasProgramEnded())
        throw TError(
            TErrorKind::Conflict, u"Corvadine did not end for two minutes, so nothing was replaced"_s);
    FFolder.Log().Write(u"Wait for Corvadine to end"_s, u"it has ended"_s);
    TUpdateInstaller installer(FFolder);
    installer.Recover();
    const TStagedUpdate update = ReadStagedUpdate(LoadUpdateSettings(FFolder));
    FFolder.Log().Write(FStep, u"the publisher's signature is good"_s);
    FStep.clear();
    installer.Install(update, FJob.Executable);
    FFolder.WriteReport(u"Corvadine was updated to version %1."_s.arg(update.Version));
}

bool THelperRun::HasProgramEnded()
{
    if (!FProgramEnded)
        FProgramEnded = FProgram.WaitForEnd(EndOfProgram);
    return *FProgramEnded;
}

void THelperRun::Restart() const
{
    const bool started = QProcess::startDetached(FJob.Executable, {}, FJob.ProgramFolder);
    FFolder.Log().Write(u"Start Corvadine again"_s, started ? u"done"_s : u"failed"_s);
}

} // namespace

QStringList HelperArguments(const THelperJob& job)
{
    return { job.ProgramFolder, job.Executable, QString::number(job.WaitFor) };
}

THelperJob ParseHelperArguments(const QStringList& arguments)
{
    THelperJob job { arguments.value(0), arguments.value(1), arguments.value(2).toLongLong() };
    if (arguments.size() != 3 || job.ProgramFolder.isEmpty() || job.Executable.isEmpty() || job.WaitFor <= 0)
        throw TError(TErrorKind::Usage,
            u"This program is started by Corvadine when it updates itself; there is nothing to "
            "do for it otherwise."_s);
    return job;
}

bool RunHelper(const THelperJob& job)
{
    return THelperRun(job).Run();
}

} // namespace Corvadine

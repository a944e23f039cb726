#include "tests/TestingSystem.h"

#include <QProcess>

#include <qt_windows.h>

namespace Corvadine::Testing {

QString HardName()
{
    return QStringLiteral("It's a 'M\u00e4rchen' & 100%TEMP% \U0001F600");
}

bool IsPosix()
{
    return false;
}

bool SurvivesInCopy(const std::function<void()>& /*work*/)
{
    return false;
}

void RunAndKill(const std::function<void()>& /*work*/, std::chrono::microseconds /*after*/) { }

void MakeKillable(QProcess& process)
{
    // The process that serves a console would stay, now and then, and hold on to our output for ever.
    process.setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments* arguments) {
        arguments->flags = (arguments->flags & ~DWORD { CREATE_NO_WINDOW }) | DETACHED_PROCESS;
    });
}

TFileSizeLimit::TFileSizeLimit(quint64 /*bytes*/) { }

TFileSizeLimit::~TFileSizeLimit() = default;

} // namespace Corvadine::Testing

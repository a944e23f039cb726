#include "tests/TestingSystem.h"

#include "base/Literals.h"

#include <QProcess>

#include <qt_windows.h>

namespace Corvadine::Testing {

QString HardName()
{
    return u"It's a 'M\u00e4rchen' & 100%TEMP% \U0001F600"_s;
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

void FillNewMemory(int /*value*/) { }

void MakeKillable(QProcess& process)
{
    // Otherwise the process that serves the console sometimes stays, and keeps our output open for ever.
    process.setCreateProcessArgumentsModifier([](QProcess::CreateProcessArguments* arguments) {
        arguments->flags = (arguments->flags & ~DWORD { CREATE_NO_WINDOW }) | DETACHED_PROCESS;
    });
}

TFileSizeLimit::TFileSizeLimit(quint64 /*bytes*/) { }

TFileSizeLimit::~TFileSizeLimit() = default;

} // namespace Corvadine::Testing

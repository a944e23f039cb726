#include "tests/TestingSystem.h"

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

TFileSizeLimit::TFileSizeLimit(quint64 /*bytes*/) { }

TFileSizeLimit::~TFileSizeLimit() = default;

} // namespace Corvadine::Testing

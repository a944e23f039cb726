#include "tests/TestingSystem.h"

#include "base/Literals.h"

#include <gtest/gtest.h>

#include <malloc.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <thread>

namespace Corvadine::Testing {

QString HardName()
{
    return u"It's a \"M\u00e4rchen\" \U0001F600"_s;
}

namespace {

pid_t StartCopy(const std::function<void()>& work)
{
    const pid_t child = ::fork();
    EXPECT_GE(child, 0);
    if (child == 0) {
        // The function is noexcept, because an exception must end the copy and must not reach GoogleTest.
        [&]() noexcept { work(); }();
        ::_exit(0);
    }
    return child;
}

} // namespace

bool IsPosix()
{
    return true;
}

bool SurvivesInCopy(const std::function<void()>& work)
{
    int status = 0;
    ::waitpid(StartCopy(work), &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

void RunAndKill(const std::function<void()>& work, std::chrono::microseconds after)
{
    const pid_t child = StartCopy(work);
    std::this_thread::sleep_for(after);
    ::kill(child, SIGKILL);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
}

void FillNewMemory(int value)
{
    ::mallopt(M_PERTURB, value);
}

void MakeKillable(QProcess& /*process*/) { }

TFileSizeLimit::TFileSizeLimit(quint64 bytes)
{
    rlimit limit {};
    EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    FBefore = limit.rlim_cur;
    limit.rlim_cur = bytes;
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

TFileSizeLimit::~TFileSizeLimit()
{
    rlimit limit {};
    EXPECT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    limit.rlim_cur = FBefore;
    EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
}

} // namespace Corvadine::Testing

#pragma once

#include <QString>

#include <chrono>
#include <functional>

class QProcess;

// What is different for tests on each operating system. Tests skip what their system cannot do.
namespace Corvadine::Testing {

// A file name with the characters that are most difficult to quote and to encode on this system.
QString HardName();

// Whether QFile::link() makes symbolic links, a process can be copied (fork), and TFileSizeLimit has an
// effect.
bool IsPosix();

// Runs `work` in a copy of this process. Returns false if the copy ended before `work` did.
bool SurvivesInCopy(const std::function<void()>& work);

// Runs `work` in a copy of this process, and kills the copy `after` that time. REQUIRES: `work` does not end.
void RunAndKill(const std::function<void()>& work, std::chrono::microseconds after);

// Sets `process` up so that no helper process of the system is left if it is killed. REQUIRES: it is not
// started yet.
void MakeKillable(QProcess& process);

// While it lives, this process and those it starts cannot write more than `bytes` to a file, as on a full
// disk.
class TFileSizeLimit {
public:
    explicit TFileSizeLimit(quint64 bytes);
    ~TFileSizeLimit();
    Q_DISABLE_COPY_MOVE(TFileSizeLimit)

private:
    quint64 FBefore = 0;
};

} // namespace Corvadine::Testing

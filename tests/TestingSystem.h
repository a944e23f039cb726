#pragma once

#include <QString>

#include <chrono>
#include <functional>

class QProcess;

// What is different for tests on each operating system. Tests skip what their system cannot do.
namespace Corvadine::Testing {

// Returns a file name with the characters that are most difficult to quote and to encode on this system.
QString HardName();

// Returns whether the system is a POSIX system. On such a system QFile::link() makes symbolic links, a
// process can be copied (fork), and TFileSizeLimit has an effect.
bool IsPosix();

// Runs `work` in a copy of this process. Returns false if the copy ended before `work` did.
bool SurvivesInCopy(const std::function<void()>& work);

// Runs `work` in a copy of this process, and kills the copy after the time `after`. REQUIRES: `work` does
// not end.
void RunAndKill(const std::function<void()>& work, std::chrono::microseconds after);

// From now on, new memory is filled with bytes other than zero. The bytes depend on `value`. A `value` of 0
// ends the filling. Has no effect on Windows and under a sanitizer.
void FillNewMemory(int value);

// Prepares `process` for a kill, so that a killed process leaves no helper process of the system behind.
// REQUIRES: `process` is not started yet.
void MakeKillable(QProcess& process);

// Acts like a full disk. While this object exists, this process and the processes that it starts cannot write
// more than `bytes` to a file.
class TFileSizeLimit {
public:
    explicit TFileSizeLimit(quint64 bytes);
    ~TFileSizeLimit();
    Q_DISABLE_COPY_MOVE(TFileSizeLimit)

private:
    quint64 FBefore = 0;
};

} // namespace Corvadine::Testing

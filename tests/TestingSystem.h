#pragma once

#include <QString>

#include <chrono>
#include <functional>

class QProcess;

// What tests find different between operating systems. A test asks first and skips what its system cannot do.
namespace Corvadine::Testing {

// A file name as hard on quoting and encoding as the system allows.
QString HardName();

// Whether QFile::link() makes links that stand for the file they lead to, a process can go on as two, and
// TFileSizeLimit has an effect.
bool IsPosix();

// Runs `work` in a copy of this process; returns whether it came to its end. It may end the copy before.
bool SurvivesInCopy(const std::function<void()>& work);

// Runs `work`, which must not end, in a copy of this process and kills it `after` a while.
void RunAndKill(const std::function<void()>& work, std::chrono::microseconds after);

// Makes a program that is killed leave nothing behind. REQUIRES: it is not started yet.
void MakeKillable(QProcess& process);

// Lets this process and those it starts fail to write past the first `bytes` of a file, as on a full disk.
class TFileSizeLimit {
public:
    explicit TFileSizeLimit(quint64 bytes);
    ~TFileSizeLimit();
    Q_DISABLE_COPY_MOVE(TFileSizeLimit)

private:
    quint64 FBefore = 0;
};

} // namespace Corvadine::Testing

#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>

// What the fuzz targets share. Each target is one function that libFuzzer calls with many inputs
// (https://llvm.org/docs/LibFuzzer.html). If the process ends during a call, libFuzzer reports a fault.
namespace Corvadine::Fuzzing {

// Ends the process unless `holds` is true. `holds` is a promise that the tested code makes for every input.
inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}

inline QByteArray BytesOf(const std::uint8_t* data, std::size_t size)
{
    return { reinterpret_cast<const char*>(data), static_cast<qsizetype>(size) };
}

// Returns a folder in memory that only this process uses. The folder is removed at the end of the process.
inline const QTemporaryDir& Folder()
{
    static const QTemporaryDir TheFolder(QStringLiteral("/dev/shm/corvadine-fuzz"));
    return TheFolder;
}

// Writes `bytes` to the file `name` in Folder(), for code that takes a path. Returns the path of the file.
inline QString FileWith(const QString& name, const QByteArray& bytes)
{
    const QString path = Folder().filePath(name);
    std::ofstream(path.toStdString(), std::ios::binary).write(bytes.constData(), bytes.size());
    return path;
}

} // namespace Corvadine::Fuzzing

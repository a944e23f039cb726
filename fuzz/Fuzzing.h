#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>

// What the fuzz targets share. Each target is one function that libFuzzer calls with more and more inputs
// (https://llvm.org/docs/LibFuzzer.html); a fault is what ends the process.
namespace Corvadine::Fuzzing {

// Ends the process unless a promise holds that the code under test makes for every input.
inline void Require(bool holds)
{
    if (!holds)
        std::abort();
}

inline QByteArray BytesOf(const std::uint8_t* data, std::size_t size)
{
    return { reinterpret_cast<const char*>(data), static_cast<qsizetype>(size) };
}

// A folder of this process in memory, removed at its end.
inline const QTemporaryDir& Folder()
{
    static const QTemporaryDir TheFolder(QStringLiteral("/dev/shm/corvadine-fuzz"));
    return TheFolder;
}

// Writes `bytes` to a file of that folder, for code that takes a path, and returns the path.
inline QString FileWith(const QString& name, const QByteArray& bytes)
{
    const QString path = Folder().filePath(name);
    std::ofstream(path.toStdString(), std::ios::binary).write(bytes.constData(), bytes.size());
    return path;
}

} // namespace Corvadine::Fuzzing

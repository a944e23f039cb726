#pragma once

#include <QByteArray>

#include <mspack.h>

namespace Corvadine {

// A file system in memory for libmspack. Every file name opens the one input for reading, or the one output
// for writing. A decompressor uses this object as its mspack_system, so the object must outlive the
// decompressor. Allocations above 64 MiB fail.
class TMspackMemory : public mspack_system {
public:
    explicit TMspackMemory(QByteArray input);
    Q_DISABLE_COPY_MOVE(TMspackMemory)

    // Starts a new output. Writing more than `size` bytes to the output fails. May throw std::bad_alloc.
    void StartOutput(qsizetype size);

    // Returns the bytes written since StartOutput() and ends the output.
    QByteArray TakeOutput();

private:
    struct TFile;

    static mspack_file* Open(mspack_system* self, const char* name, int mode);
    static void Close(mspack_file* file);
    static int Read(mspack_file* file, void* buffer, int size);
    static int Write(mspack_file* file, void* buffer, int size);
    static int Seek(mspack_file* file, off_t offset, int mode);
    static off_t Tell(mspack_file* file);
    static void* Allocate(mspack_system* self, size_t size);

    const QByteArray FInput;
    QByteArray FOutput;
    qsizetype FWritten = 0;
};

} // namespace Corvadine

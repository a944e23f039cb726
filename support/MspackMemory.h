#pragma once

#include <QByteArray>

#include <mspack.h>

namespace Corvadine {

// What libmspack takes for the file system: one input, which it finds under every name, and one output. Hand
// it to a decompressor as its system; it must outlive that. Only allocations of a sensible size are granted.
class TMspackMemory : public mspack_system {
public:
    explicit TMspackMemory(QByteArray input);
    Q_DISABLE_COPY_MOVE(TMspackMemory)

    // Makes room for the next output, which is refused what goes beyond `size` bytes. May throw bad_alloc.
    void StartOutput(qsizetype size);

    // What has been written since.
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

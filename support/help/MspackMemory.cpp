#include "support/help/MspackMemory.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace Corvadine {

namespace {

constexpr size_t MaxAllocation = 64 << 20; // because a damaged file could make libmspack ask for any amount

void Ignore(mspack_file* /*file*/, const char* /*format*/, ...) { }

} // namespace

struct TMspackMemory::TFile : mspack_file {
    TMspackMemory& Memory;
    bool Writes;
    qsizetype Position = 0;
};

TMspackMemory::TMspackMemory(QByteArray input) : mspack_system(), FInput(std::move(input))
{
    open = Open;
    close = Close;
    read = Read;
    write = Write;
    seek = Seek;
    tell = Tell;
    message = Ignore;
    alloc = Allocate;
    free = std::free;
    copy = [](void* from, void* to, size_t size) { std::memcpy(to, from, size); };
}

void TMspackMemory::StartOutput(qsizetype size)
{
    FOutput = QByteArray(size, '\0');
    FWritten = 0;
}

QByteArray TMspackMemory::TakeOutput()
{
    FOutput.truncate(FWritten);
    return std::exchange(FOutput, {});
}

// The functions below must not throw, because libmspack calls them and is written in C.

mspack_file* TMspackMemory::Open(mspack_system* self, const char* /*name*/, int mode)
{
    return new (std::nothrow) TFile { {}, *static_cast<TMspackMemory*>(self), mode != MSPACK_SYS_OPEN_READ };
}

void TMspackMemory::Close(mspack_file* file)
{
    delete static_cast<TFile*>(file);
}

int TMspackMemory::Read(mspack_file* file, void* buffer, int size)
{
    auto& from = *static_cast<TFile*>(file);
    const QByteArray& input = from.Memory.FInput;
    if (from.Writes || size < 0)
        return -1;
    const auto count = std::min<qsizetype>(size, input.size() - from.Position);
    std::memcpy(buffer, input.constData() + from.Position, static_cast<size_t>(count));
    from.Position += count;
    return static_cast<int>(count);
}

int TMspackMemory::Write(mspack_file* file, void* buffer, int size)
{
    const auto& to = *static_cast<TFile*>(file);
    TMspackMemory& memory = to.Memory;
    if (!to.Writes || size < 0 || size > memory.FOutput.size() - memory.FWritten)
        return -1;
    std::memcpy(memory.FOutput.data() + memory.FWritten, buffer, static_cast<size_t>(size));
    memory.FWritten += size;
    return size;
}

int TMspackMemory::Seek(mspack_file* file, off_t offset, int mode)
{
    auto& moved = *static_cast<TFile*>(file);
    const qsizetype size = moved.Memory.FInput.size();
    const qsizetype start = mode == MSPACK_SYS_SEEK_CUR ? moved.Position
        : mode == MSPACK_SYS_SEEK_END                   ? size
                                                        : 0;
    if (moved.Writes || offset < -start || offset > size - start)
        return -1;
    moved.Position = start + offset;
    return 0;
}

off_t TMspackMemory::Tell(mspack_file* file)
{
    return static_cast<TFile*>(file)->Position;
}

void* TMspackMemory::Allocate(mspack_system* /*self*/, size_t size)
{
    return size > MaxAllocation ? nullptr : std::malloc(size);
}

} // namespace Corvadine

#pragma once

#include <cstddef>
#include <cstdio>

// Process-wide matters of the operating system. Files are in StagedFile.h and Files.h.
namespace Corvadine {

// Prepares signals and standard streams. Call this once at the start of main(). Afterwards a write past a
// file-size limit fails with an error and does not end the process. On Windows, the standard streams then
// print UTF-8 and keep LF.
void PrepareProcess();

// Returns a new stream for the program's own lines. It prints to the place where stderr has printed so far.
// Afterwards everything that is printed to stderr itself is discarded, because image decoders print
// complaints there and cannot be told to be silent. Returns null, with nothing changed, if the system
// refuses.
std::FILE* TakeErrorStream();

// Whether the error stream is a terminal, so that progress can be drawn there. REQUIRES: TakeErrorStream()
// has not been called.
bool ErrorStreamIsTerminal();

// The size in bytes of a large page of memory, and the alignment that PreferLargePages() needs.
constexpr std::size_t LargePageBytes = std::size_t { 2 } * 1024 * 1024;

// Asks for large pages for memory that is not used yet. Does nothing where the system has none.
void PreferLargePages(void* memory, std::size_t bytes);

} // namespace Corvadine

#pragma once

#include <cstdio>

// Process-wide matters of the operating system. Files are in StagedFile.h and Files.h.
namespace Corvadine {

// Prepares signals and standard streams; call once at the start of main(). A write past a file-size limit
// then fails with an error, which we report, instead of ending the process. On Windows the standard streams
// then print UTF-8 and keep LF.
void PrepareProcess();

// Keeps the error stream for the program's own lines. Returns a new stream to the same place, and discards
// everything else that is printed to stderr: image decoders print their complaints there, and cannot be told
// not to. Returns null, with nothing changed, if the system refuses.
std::FILE* TakeErrorStream();

// Whether the error stream is a terminal, so that progress can be drawn there. REQUIRES: TakeErrorStream()
// has not been called.
bool ErrorStreamIsTerminal();

} // namespace Corvadine

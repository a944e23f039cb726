#pragma once

#include <cstdio>

// Process-wide matters of the operating system. Files are in StagedFile.h and Files.h.
namespace Corvadine {

// Call once at the start of main(): a write past a file-size limit then fails with an error that we report,
// instead of ending the process.
void PrepareProcess();

// Takes the error stream for the program's own lines: returns a new stream to where it led, and sends
// whatever else is printed there to nowhere. Image decoders print there what they think of a bad file, past
// every hook. Null, and nothing has changed, if the system refuses.
std::FILE* TakeErrorStream();

// Whether diagnostics go to a person's terminal, so that progress may be drawn there.
bool ErrorStreamIsTerminal(); // ask before the stream is taken

} // namespace Corvadine

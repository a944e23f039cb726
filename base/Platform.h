#pragma once

// Process-wide matters of the operating system. Files are in StagedFile.h and Files.h.
namespace Corvadine {

// Call once at the start of main(): a write past a file-size limit then fails with an error that we report,
// instead of ending the process.
void PrepareProcess();

// Whether diagnostics go to a person's terminal, so that progress may be drawn there.
bool ErrorStreamIsTerminal();

} // namespace Corvadine

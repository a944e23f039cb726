#pragma once

#include "support/update/rules/ControlFile.h"

#include <vector>

namespace Corvadine {

// A downloaded update that waits in the staging folder to be moved into place. Beside the update's files, the
// folder holds what the helper needs to verify the files again:
//     Corvadine.INF, Corvadine.INF.sig   the control file and its signature, as they were verified
//     chosen                             the targets to be installed, one per line

struct TStagedUpdate {
    QString Version; // of the release
    std::vector<TUpdateFile> Files;
};

// Writes the verified control file, its signature and the chosen targets into the staging folder. Does not
// sync these files to disk, because the download is repeated after a power failure. Throws TError(Io).
// REQUIRES: the staging folder exists.
void StageControlFile(const TUpdateFolder& folder, const QByteArray& bytes, const QByteArray& signature,
    const std::vector<TUpdateFile>& chosen);

// Returns the update in the staging folder of `settings.Folder`, after verifying it again. The helper calls
// this function, because another process has filled the folder and the helper trusts nothing in the folder.
// Changes no file. Throws TError unless
// - the signature of the control file is good, and its version may be installed (see IsOffered());
// - the control file lists every file for this platform, with its size and SHA-256, and no file is a link;
// - exactly the chosen files are there, and all newer mandatory files are among them. Otherwise half a
//   release would be recorded as a whole release.
TStagedUpdate ReadStagedUpdate(const TUpdateSettings& settings);

} // namespace Corvadine

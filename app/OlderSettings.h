#pragma once

namespace Corvadine {

class TProjectsTable;
class TSettingsFile;

// Appends to the table the one project that the older release kept in its settings file. Does not save the
// new row. Throws what the table throws. REQUIRES: settings.HasSection(); the table is open.
void AppendOlderProject(TProjectsTable& table, const TSettingsFile& settings);

} // namespace Corvadine

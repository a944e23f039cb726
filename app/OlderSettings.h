#pragma once

namespace Corvadine {

class TProjectsTable;
class TSettingsFile;

// Appends the one project of the older release to `table`. The older release kept this project in its
// settings file. Does not save the new row. Throws what the table throws. REQUIRES: settings.HasSection();
// the table is open.
void AppendOlderProject(TProjectsTable& table, const TSettingsFile& settings);

} // namespace Corvadine

#pragma once

namespace Corvadine {

class TProjectsTable;
class TSettingsFile;

// The older release kept its one project in its settings file. Appends that project to the table and leaves
// it unposted. REQUIRES: settings.HasSection(); the table is open. Throws what the table throws.
void AppendOlderProject(TProjectsTable& table, const TSettingsFile& settings);

} // namespace Corvadine

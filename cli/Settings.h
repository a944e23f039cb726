#pragma once

#include "store/Project.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <map>

namespace CLI {
class App;
}

// A project's settings on the command line. For example, the option "--format true" sets a setting, and the
// JSON member "format" shows the setting.
namespace Corvadine {

class TProjectsTable;

// The options of a command that changes settings.
class TSettingsOptions {
public:
    // Declares all settings. Parsing refuses values that no project can have. This object must live until
    // parsing has ended.
    void Declare(CLI::App& app);

    bool IsEmpty() const { return FValues.empty(); }
    bool Has(TField field) const { return FValues.contains(field); }

    // Throws TError if the header of a given source image cannot be read, or if the given output folder is a
    // file. So the user sees a mistake at once, not in the next build.
    void CheckPaths() const;

    // Puts the given values into the row that is being edited or inserted.
    void SetFields(TProjectsTable& table) const;

private:
    std::map<TField, QVariant> FValues;
};

// Returns the project as a JSON object: "id", "project", and the settings by name. A setting without a value
// is null.
QJsonObject ProjectJson(const TProject& project);

// Returns the project as aligned lines, with the values in the form that the options take.
QStringList ProjectLines(const TProject& project);

} // namespace Corvadine

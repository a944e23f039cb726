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

// A project's settings in the words of the command line: "--format true", and "format" in what is printed.
namespace Corvadine {

class TProjectsTable;

// Options of a command that sets them.
class TSettingsOptions {
public:
    // Declares all settings; values that no project could have are refused while parsing.
    // The object must outlive the parsing.
    void Declare(CLI::App& app);

    bool IsEmpty() const { return FValues.empty(); }
    bool Has(TField field) const { return FValues.contains(field); }

    // Throws TError unless the source images that are named exist and the output folder could: a slip of the
    // finger shows at once rather than in the next build.
    void CheckPaths() const;

    // Puts the values that were given into the row being edited or inserted.
    void SetFields(TProjectsTable& table) const;

private:
    std::map<TField, QVariant> FValues;
};

// The project as a JSON object: "id", "project", and the settings by name; null for what has no value.
QJsonObject ProjectJson(const TProject& project);

// The same as aligned lines, values as they can be typed back.
QStringList ProjectLines(const TProject& project);

} // namespace Corvadine

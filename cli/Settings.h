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

// A project's settings as the command line reads and prints them: "--format true", and "format" in JSON.
namespace Corvadine {

class TProjectsTable;

// The options of a command that changes settings.
class TSettingsOptions {
public:
    // Declares all settings. Parsing refuses values that no project can have. This object must live as long
    // as the parsing.
    void Declare(CLI::App& app);

    bool IsEmpty() const { return FValues.empty(); }
    bool Has(TField field) const { return FValues.contains(field); }

    // Throws TError unless the given source images exist and the given output folder is no file. So a typing
    // error shows at once, not in the next build.
    void CheckPaths() const;

    // Puts the given values into the row that is being edited or inserted.
    void SetFields(TProjectsTable& table) const;

private:
    std::map<TField, QVariant> FValues;
};

// The project as a JSON object: "id", "project", and the settings by name; null for what has no value.
QJsonObject ProjectJson(const TProject& project);

// The same as aligned lines. The values are written as the options take them.
QStringList ProjectLines(const TProject& project);

} // namespace Corvadine

#pragma once

#include <QString>

class QWidget;

namespace Corvadine {

class TProjectLookup;
class TProjectsTable;
class TSettingsFile;
struct TMainState;

// What the window remembers from one run of the program to the next, in a file in the program folder: where
// it stood, and which project was current.
class TWindowSettings {
public:
    struct TParts {
        QWidget& Window;
        TProjectsTable& Table;
        TProjectLookup& Lookup;
        TMainState& State; // gets MyIniFileName
    };

    explicit TWindowSettings(TParts parts);

    // Places the window as the file says. The file of the older release, if there is one, is taken instead:
    // its project is added to the table, and it is deleted once that has been saved. Throws TError.
    void Read();

    // Makes the remembered project current if its file and its row are still there.
    void ReopenProject();

    // Writes the file as things stand; does nothing before Read(). Throws TError(Io).
    void Save() const;

private:
    void ImportOlder(const TSettingsFile& settings);

    TParts FParts;
    QString FRememberedProject;
};

} // namespace Corvadine

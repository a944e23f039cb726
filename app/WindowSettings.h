#pragma once

#include <QString>

class QWidget;

namespace Corvadine {

class TSettingsFile;
struct TMainState;

// Keeps the window's placement and current project for the next start, in a file in the program folder.
class TWindowSettings {
public:
    // `window` and `state` must outlive this object.
    TWindowSettings(QWidget& window, TMainState& state) : FWindow(window), FState(state) { }

    // Sets MyIniFileName, reads the settings file of this name, and places the window accordingly. If the
    // settings file of the older release exists, reads the older file instead. Then adds the project of the
    // older file to the table, saves the row, and deletes the older file. Throws TError.
    void Read();

    // Makes the remembered project current if its file and its row still exist.
    void ReopenProject();

    // Writes the settings file. Does nothing before Read(). Throws TError(Io).
    void Save() const;

private:
    void ImportOlder(const TSettingsFile& settings);

    QWidget& FWindow;
    TMainState& FState;
    QString FRememberedProject;
};

} // namespace Corvadine

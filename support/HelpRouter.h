#pragma once

#include "support/HelpViewer.h"

#include <QObject>
#include <QString>

namespace Corvadine {

enum class THelpType {
    htNone,     // requests go nowhere
    htHTMLhelp, // to the viewer of compiled HTML help
};

// Takes every request for help that the application makes and has its help file opened there. A file that is
// missing or damaged is no error: nothing happens then.
class THelpRouter : public QObject {
    Q_OBJECT

public:
    // The command that opens the contents, for HelpCommand().
    static constexpr int ContentsCommand = 3;

    // Belongs to `owner`, and so does what it shows.
    explicit THelpRouter(QWidget* owner);

    void SetHelpFile(const QString& path) { FHelpFile = path; }
    const QString& HelpFile() const { return FHelpFile; }
    void SetHelpType(THelpType type) { FHelpType = type; }

    // Opens the page with this number.
    void HelpContext(int topic);

    // Carries out a help command; all but ContentsCommand, whose data is 0, are ignored.
    void HelpCommand(int command, quintptr data);

private:
    bool CanShow() const;

    std::unique_ptr<THelpViewer> FViewer;
    QString FHelpFile;
    THelpType FHelpType = THelpType::htNone;
};

} // namespace Corvadine

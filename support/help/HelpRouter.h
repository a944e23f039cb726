#pragma once

#include "support/help/HelpViewer.h"

#include <QObject>
#include <QString>

namespace Corvadine {

enum class THelpType {
    htNone,     // requests are ignored
    htHTMLhelp, // requests open the viewer of compiled HTML help
};

// Receives all of the application's requests for help, and opens the help file at the requested place. If the
// file is missing or damaged, nothing happens.
class THelpRouter : public QObject {
    Q_OBJECT

public:
    // The command for HelpCommand() that opens the contents.
    static constexpr int ContentsCommand = 3;

    // The router is a child of `owner`. The help closes when the router is deleted.
    explicit THelpRouter(QWidget* owner);

    void SetHelpFile(const QString& path) { FHelpFile = path; }

    void SetHelpType(THelpType type) { FHelpType = type; }

    // Opens the page with the number `topic`. Ignores numbers below 1.
    void HelpContext(int topic);

    // Opens the contents if `command` is ContentsCommand. Ignores every other command. `data` is not used.
    void HelpCommand(int command, quintptr data);

private:
    bool CanShow() const;

    std::unique_ptr<THelpViewer> FViewer;
    QString FHelpFile;
    THelpType FHelpType = THelpType::htNone;
};

} // namespace Corvadine

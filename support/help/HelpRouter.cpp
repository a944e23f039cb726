#include "support/help/HelpRouter.h"

#include "base/Files.h"

#include <QWidget>

namespace Corvadine {

THelpRouter::THelpRouter(QWidget* owner) : QObject(owner), FViewer(MakeHelpViewer()) { }

void THelpRouter::HelpContext(int topic)
{
    if (CanShow() && topic > 0)
        FViewer->ShowTopic(FHelpFile, static_cast<quint32>(topic));
}

void THelpRouter::HelpCommand(int command, quintptr /*data*/)
{
    if (CanShow() && command == ContentsCommand)
        FViewer->ShowContents(FHelpFile);
}

bool THelpRouter::CanShow() const
{
    return FHelpType == THelpType::htHTMLhelp && FileExists(FHelpFile);
}

} // namespace Corvadine

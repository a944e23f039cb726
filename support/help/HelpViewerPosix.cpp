#include "support/help/HelpViewer.h"
#include "support/help/HelpWindow.h"

namespace Corvadine {

namespace {

class TWindowViewer : public THelpViewer {
public:
    void ShowTopic(const QString& file, quint32 topic) override { Window().ShowTopic(file, topic); }
    void ShowContents(const QString& file) override { Window().ShowContents(file); }

private:
    // Makes the window on first use, because most runs of the program need no help.
    THelpWindow& Window()
    {
        if (!FWindow)
            FWindow = std::make_unique<THelpWindow>();
        return *FWindow;
    }

    std::unique_ptr<THelpWindow> FWindow;
};

} // namespace

std::unique_ptr<THelpViewer> MakeHelpViewer()
{
    return std::make_unique<TWindowViewer>();
}

} // namespace Corvadine

#pragma once

#include <QString>

#include <memory>

namespace Corvadine {

// Shows a compiled help file, with HTML Help on Windows and in THelpWindow on other systems. If the
// file cannot be read or does not have the topic, nothing happens and nothing is thrown. Use on the
// window's thread.
class THelpViewer {
public:
    virtual ~THelpViewer() = default;

    virtual void ShowTopic(const QString& file, quint32 topic) = 0;
    virtual void ShowContents(const QString& file) = 0;
};

// Returns the viewer for this system. A dialog blocks the main window and all windows that the main window
// owns. The help must stay usable while a dialog is open, so no window owns the help window. The viewer's
// destructor closes the help window.
std::unique_ptr<THelpViewer> MakeHelpViewer();

} // namespace Corvadine

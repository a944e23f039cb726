#pragma once

#include <QString>

#include <memory>

namespace Corvadine {

// Shows a compiled help file: with HTML Help on Windows, in THelpWindow elsewhere. If the file cannot be read
// or does not have the topic, nothing happens and nothing is thrown. Use on the window's thread.
class THelpViewer {
public:
    virtual ~THelpViewer() = default;

    virtual void ShowTopic(const QString& file, quint32 topic) = 0;
    virtual void ShowContents(const QString& file) = 0;
};

// Makes the viewer for this system. The help window has no owner, because a dialog would block the owner and
// the help with it. The help must stay usable beside a dialog. The viewer's destructor closes the window.
std::unique_ptr<THelpViewer> MakeHelpViewer();

} // namespace Corvadine

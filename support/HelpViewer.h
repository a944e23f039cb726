#pragma once

#include <QString>

#include <memory>

namespace Corvadine {

// The system's way to show a compiled help file: HTML Help on Windows, a window of our own elsewhere. A file
// that cannot be read, and a topic that it does not have, show nothing and tell nothing. Use on the window's
// thread.
class THelpViewer {
public:
    virtual ~THelpViewer() = default;

    virtual void ShowTopic(const QString& file, quint32 topic) = 0;
    virtual void ShowContents(const QString& file) = 0;
};

// What it shows has no owner, so that it stays usable beside the program's dialogs, which block their owners.
// It is closed when the viewer is destroyed.
std::unique_ptr<THelpViewer> MakeHelpViewer();

} // namespace Corvadine

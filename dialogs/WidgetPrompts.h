#pragma once

#include "dialogs/Prompts.h"
#include "widgets/HelpKey.h"

#include <QString>

class QDialog;
class QWidget;

namespace Corvadine {

// Shows the prompts as real boxes and dialogs, centered on a window. Texts are shown as plain text, because
// file names may look like markup.
class TWidgetPrompts : public TPrompts {
public:
    // Sets the window. Each box is centered on this window and blocks it. A box that is shown before this
    // call has no window to block. REQUIRES: `window` outlives this object.
    void SetWindow(QWidget* window) { FWindow = window; }

    // Sets the function that is called when F1 is pressed in a dialog. Without this function, F1
    // does nothing.
    void SetHelp(THelpRequest help) { FHelp = std::move(help); }

    void ShowError(const QString& text) override;
    void Inform(const QString& text) override;
    bool Confirm(const QString& text) override;
    std::optional<QString> ChooseProjectFile() override;
    std::optional<QString> ChooseImage(const QString& startFolder) override;

private:
    int Run(QDialog& form) const;

    QWidget* FWindow = nullptr;
    THelpRequest FHelp;
    QString FProjectFolder; // folder of the last chosen project file; the next dialog opens there
};

} // namespace Corvadine

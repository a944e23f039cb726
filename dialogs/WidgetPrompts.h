#pragma once

#include "dialogs/HelpKey.h"
#include "dialogs/Prompts.h"

#include <QString>

class QDialog;
class QWidget;

namespace Corvadine {

// The prompts as real boxes and dialogs, centred on a window. Texts are plain: whatever a file name holds is
// shown as it is.
class TWidgetPrompts : public TPrompts {
public:
    // The window to centre on and to block; null, as at first, is none. REQUIRES: it lives longer.
    void SetWindow(QWidget* window) { FWindow = window; }

    // Who is asked for help when F1 is pressed in a dialog; nobody at first.
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
    QString FProjectFolder; // of the project file chosen last
};

} // namespace Corvadine

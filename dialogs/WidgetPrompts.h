#pragma once

#include "dialogs/Prompts.h"

#include <QString>

class QWidget;

namespace Corvadine {

// The prompts as real boxes and dialogs, centred on a window. Texts are plain: whatever a file name holds is
// shown as it is.
class TWidgetPrompts : public TPrompts {
public:
    // The window to centre on and to block; null, as at first, is none. REQUIRES: it lives longer.
    void SetWindow(QWidget* window) { FWindow = window; }

    void ShowError(const QString& text) override;
    void Inform(const QString& text) override;
    bool Confirm(const QString& text) override;
    std::optional<QString> ChooseProjectFile() override;
    std::optional<QString> ChooseImage(const QString& startFolder) override;

private:
    QWidget* FWindow = nullptr;
    QString FProjectFolder; // of the project file chosen last
};

} // namespace Corvadine

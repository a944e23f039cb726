#pragma once

#include "dialogs/Prompts.h"

#include <iostream>

namespace Corvadine {

// Prompts for programs that run the window without a user. They confirm everything, choose nothing, and
// print errors.
class TSilentPrompts : public TPrompts {
public:
    void ShowError(const QString& text) override { std::cerr << text.toStdString() << '\n'; }
    void Inform(const QString&) override { }
    bool Confirm(const QString&) override { return true; }
    std::optional<QString> ChooseProjectFile() override { return {}; }
    std::optional<QString> ChooseImage(const QString&) override { return {}; }
};

} // namespace Corvadine

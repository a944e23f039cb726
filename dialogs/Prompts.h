#pragma once

#include <QString>

#include <optional>

namespace Corvadine {

// Everything the window asks or tells its user in a box of its own. The one seam between the window's rules
// and modal dialogs: tests put their answers here. Each call returns when the user has answered. Use on the
// window's thread.
class TPrompts {
public:
    virtual ~TPrompts() = default;

    // Error icon, one button OK.
    virtual void ShowError(const QString& text) = 0;

    // Information icon, one button OK.
    virtual void Inform(const QString& text) = 0;

    // Question with Yes and No; true only for Yes, also when the box is closed in another way.
    virtual bool Confirm(const QString& text) = 0;

    // The add-project dialog: the chosen project file's path as displayed there; nothing if not accepted.
    virtual std::optional<QString> ChooseProjectFile() = 0;

    // The image picker, starting in `startFolder` if that is an existing folder: the chosen file's full path;
    // nothing if cancelled.
    virtual std::optional<QString> ChooseImage(const QString& startFolder) = 0;
};

} // namespace Corvadine

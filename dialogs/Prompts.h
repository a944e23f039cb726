#pragma once

#include <QString>

#include <optional>

namespace Corvadine {

// All boxes and dialogs in which the window asks or tells the user something. Tests implement this interface
// to answer without modal dialogs. Each call returns when the user has answered. Use on the window's thread.
class TPrompts {
public:
    virtual ~TPrompts() = default;

    // Shows `text` with an error icon and the button OK.
    virtual void ShowError(const QString& text) = 0;

    // Shows `text` with an information icon and the button OK.
    virtual void Inform(const QString& text) = 0;

    // Asks `text` with the buttons Yes and No. Returns true only for Yes. Closing the box means No.
    virtual bool Confirm(const QString& text) = 0;

    // Shows the add-project dialog. Returns the chosen path as displayed, or nothing if the user canceled.
    virtual std::optional<QString> ChooseProjectFile() = 0;

    // Shows the image picker, in `startFolder` if that folder exists. Returns the full path of the chosen
    // file, or nothing if the user canceled.
    virtual std::optional<QString> ChooseImage(const QString& startFolder) = 0;
};

} // namespace Corvadine

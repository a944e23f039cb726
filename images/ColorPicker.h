#pragma once

#include <QObject>
#include <QWidget>

namespace Corvadine {

class TImageView;

// Picks a colour from the icon image with the pointer: while pick mode is on, moves over either image view
// tell the colour under the pointer, and a press of any button picks it and ends pick mode.
//
// Both views have one size and fit their images in the same way, so a point in the launch view stands for the
// same point of the icon view: the launch image itself is never sampled.
//
// The views have no zoom or selection, so nothing about them needs to be switched off for picking.
class TColorPicker : public QObject {
    Q_OBJECT
public:
    // The views and the window must outlive the picker; `window` is the one that holds the views, and becomes
    // the picker's owner.
    TColorPicker(TImageView* iconView, TImageView* launchView, QWidget* window);

    // Called when the user presses or releases the button of pick mode, with its new state. On: a hand over
    // the icon view. Off: the window gets the arrow, and the icon view keeps its hand until a colour is
    // picked.
    void SetPickMode(bool on);
    bool PickMode() const { return FPickMode; }

    // The icon image's colour at a position in either view: red in the lowest byte, then green and blue; -1
    // beside the image.
    int Sample(int x, int y) const;

signals:
    // The colour under the pointer; nothing is to be stored.
    void Previewed(int color);

    // A press picked: first this, upon which the owner lets the button of pick mode up without calling
    // SetPickMode; then Picked with the colour to store.
    void PickModeEnded();
    void Picked(int color);

private:
    void ViewMouseMoved(int x, int y);
    void ViewMousePressed(int x, int y);

    TImageView* FIconView;
    QWidget* FWindow;
    bool FPickMode = false;
};

} // namespace Corvadine

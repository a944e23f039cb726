#pragma once

#include <QObject>
#include <QWidget>

namespace Corvadine {

class TImageView;

// Picks a color from the icon image. While pick mode is on, moving the pointer over either image view
// previews a color. Pressing any mouse button there picks the color and ends pick mode.
//
// The color always comes from the icon image, never from the launch image. Both views have the same size and
// fit their images in the same way. So a point in the launch view stands for the same point in the icon view.
class TColorPicker : public QObject {
    Q_OBJECT
public:
    // `window` contains the views and owns the picker. The views must outlive the picker.
    TColorPicker(TImageView* iconView, TImageView* launchView, QWidget* window);

    // Call this with the new state of the pick button after each click. If `on`, the icon view's cursor
    // becomes a hand. Otherwise the window's cursor becomes an arrow, and the icon view keeps its hand until
    // a color is picked.
    void SetPickMode(bool on);

signals:
    // The pointer moved in pick mode; `color` is to be shown, but not stored. It has red in the lowest byte,
    // then green and blue. It is -1 beside the image.
    void Previewed(int color);

    // A press has picked a color. The owner then releases the pick button, without calling SetPickMode().
    void PickModeEnded();

    // Emitted after PickModeEnded(). `color` is to be stored; it has the form that Previewed() describes.
    void Picked(int color);

private:
    void ViewMouseMoved(int x, int y);
    void ViewMousePressed(int x, int y);

    TImageView* FIconView;
    QWidget* FWindow;
    bool FPickMode = false;
};

} // namespace Corvadine

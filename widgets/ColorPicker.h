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

    // Call this after each click on the pick button, with the new state of the button. If `on` is true, the
    // icon view's cursor becomes a hand. If `on` is false, the window's cursor becomes an arrow, but the icon
    // view keeps its hand until a color is picked.
    void SetPickMode(bool on);

signals:
    // The pointer moved in pick mode. The owner must show `color`, but must not store it. The lowest byte
    // of `color` is red, the next is green, and the third is blue. `color` is -1 if the pointer is beside
    // the image.
    void Previewed(int color);

    // A press has picked a color. The owner must release the pick button without calling SetPickMode().
    void PickModeEnded();

    // Emitted after PickModeEnded(). The owner must store `color`, which has the form that
    // Previewed() describes.
    void Picked(int color);

private:
    void ViewMouseMoved(int x, int y);
    void ViewMousePressed(int x, int y);

    TImageView* FIconView;
    QWidget* FWindow;
    bool FPickMode = false;
};

} // namespace Corvadine

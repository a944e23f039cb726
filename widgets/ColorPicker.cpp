#include "widgets/ColorPicker.h"

#include "widgets/ImageView.h"

namespace Corvadine {

TColorPicker::TColorPicker(TImageView* iconView, TImageView* launchView, QWidget* window)
    : QObject(window), FIconView(iconView), FWindow(window)
{
    for (TImageView* view : { iconView, launchView }) {
        connect(view, &TImageView::MouseMoved, this, &TColorPicker::ViewMouseMoved);
        connect(view, &TImageView::MousePressed, this, &TColorPicker::ViewMousePressed);
    }
}

void TColorPicker::SetPickMode(bool on)
{
    FPickMode = on;
    if (on)
        FIconView->setCursor(Qt::PointingHandCursor);
    else
        FWindow->setCursor(Qt::ArrowCursor); // the icon view keeps its hand until a color is picked
}

void TColorPicker::ViewMouseMoved(int x, int y)
{
    if (FPickMode)
        emit Previewed(FIconView->ColorAt(x, y));
}

void TColorPicker::ViewMousePressed(int x, int y)
{
    if (!FPickMode)
        return;
    FPickMode = false;
    emit PickModeEnded();
    emit Picked(FIconView->ColorAt(x, y));
    FIconView->unsetCursor();
}

} // namespace Corvadine

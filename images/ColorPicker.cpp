#include "images/ColorPicker.h"

#include "images/ImageView.h"

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
        FWindow->setCursor(Qt::ArrowCursor); // and the icon view keeps its hand, on purpose
}

int TColorPicker::Sample(int x, int y) const
{
    return FIconView->ColorAtImagePixel(FIconView->ImageColumn(x), FIconView->ImageRow(y));
}

void TColorPicker::ViewMouseMoved(int x, int y)
{
    if (FPickMode)
        emit Previewed(Sample(x, y));
}

void TColorPicker::ViewMousePressed(int x, int y)
{
    if (!FPickMode)
        return;
    FPickMode = false;
    emit PickModeEnded();
    emit Picked(Sample(x, y));
    FIconView->unsetCursor();
}

} // namespace Corvadine

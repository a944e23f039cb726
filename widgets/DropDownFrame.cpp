#include "widgets/DropDownFrame.h"

#include <QScreen>
#include <QVBoxLayout>

namespace Corvadine {

QRect DropDownPlace(const QWidget& anchor, QSize size)
{
    const QRect screen = anchor.screen()->availableGeometry();
    const QPoint below = anchor.mapToGlobal(QPoint(0, anchor.height()));
    QRect place(below, size.boundedTo(screen.size()));
    if (place.bottom() > screen.bottom())
        place.moveBottom(below.y() - anchor.height() - 1);
    place.moveTop(qMax(place.top(), screen.top()));
    place.moveLeft(qBound(screen.left(), place.left(), screen.right() + 1 - place.width()));
    return place;
}

TDropDownFrame::TDropDownFrame(QAbstractItemView* view, QWidget* parent)
    : QFrame(parent, Qt::Popup), FView(view)
{
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_NoMouseReplay); // otherwise a click on the anchor would close and reopen the frame
    setFrameShape(QFrame::StyledPanel);

    view->setFrameShape(QFrame::NoFrame);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->addWidget(view);

    connect(view, &QAbstractItemView::clicked, this, &TDropDownFrame::Chosen);
    connect(view, &QAbstractItemView::activated, this, &TDropDownFrame::Chosen);
}

void TDropDownFrame::DropDown(const QWidget& anchor, QSize size)
{
    setGeometry(DropDownPlace(anchor, size));
    show();
    FView->setFocus();
}

} // namespace Corvadine

#include "widgets/ImageView.h"

#include "base/PathRules.h"
#include "images/ColorPicking.h"
#include "images/RecognisedImage.h"
#include "widgets/FileDrop.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include <cmath>
#include <exception>

namespace Corvadine {

namespace {

constexpr int SideLength = 230;

// Returns the path of the dragged file if the file has the extension of an image. The program may be unable
// to read the format of the image. Otherwise returns an empty path.
QString OfferedImage(const QDropEvent& event)
{
    const QString file = OfferedFile(event);
    return IsRecognisedImageName(file) || IsUnreadImageName(file) ? file : QString();
}

} // namespace

TImageView::TImageView(QWidget* parent) : QWidget(parent), FImage(BlankSourceImage())
{
    setMouseTracking(true);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    if (parent != nullptr) {
        parent->setMouseTracking(true);
        parent->installEventFilter(this);
    }
}

void TImageView::Load(const QString& path)
{
    try {
        const QImage image = LoadSourceImage(path);
        Show(image, u"%1, %2"_s.arg(FileNameOf(path), SizeText(image.size())));
        FIsEmpty = false;
    } catch (const std::exception&) { // for example std::bad_alloc for a huge picture
        Clear();
    }
}

void TImageView::Clear()
{
    Show(BlankSourceImage(), {});
    FIsEmpty = true;
}

// `description` is the text that a screen reader speaks.
void TImageView::Show(const QImage& image, const QString& description)
{
    FImage = image;
    FFitted = {};
    setAccessibleDescription(description);
    update();
}

void TImageView::SetContentColor(const QColor& color)
{
    FContentColor = color;
    update();
}

QSize TImageView::sizeHint() const
{
    return { SideLength, SideLength };
}

QSize TImageView::DeviceSize() const
{
    return (QSizeF(size()) * devicePixelRatioF()).toSize();
}

int TImageView::ColorAt(int x, int y) const
{
    return ColorUnder({ x, y }, FImage, DeviceSize());
}

// Returns the device pixel of the view that contains the pointer. Uses the event's position in the window,
// because Qt rounds its other positions to whole logical pixels.
QPoint TImageView::PixelUnderPointer(const QMouseEvent& event) const
{
    // At a scale such as 150 %, a coordinate that should be a whole number may come out slightly too small.
    constexpr double Tolerance = 1.0 / 512;
    const QPointF position = mapFrom(window(), event.scenePosition()) * devicePixelRatioF();
    return { static_cast<int>(std::floor(position.x() + Tolerance)),
        static_cast<int>(std::floor(position.y() + Tolerance)) };
}

void TImageView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(
        event->rect(), FContentColor.isValid() ? FContentColor : palette().color(QPalette::Base));
    if (IsEmpty())
        return;
    // The picture is scaled to device pixels, so its edges are sharp at every scaling of the screen.
    const QRect fitted = FittedRect(FImage.size(), DeviceSize());
    const double ratio = devicePixelRatioF();
    if (FFitted.size() != fitted.size())
        FFitted =
            QPixmap::fromImage(FImage.scaled(fitted.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
    FFitted.setDevicePixelRatio(ratio);
    painter.drawPixmap(QPointF(fitted.topLeft()) / ratio, FFitted);
}

bool TImageView::IsUnderPointer(const QMouseEvent& event) const
{
    return QRect({}, DeviceSize()).contains(PixelUnderPointer(event));
}

// Reports a mouse event if the pointer is over this view. At 200 % Qt may give this view an event of the
// parent; see eventFilter().
void TImageView::Report(const QMouseEvent& event)
{
    const QPoint pixel = PixelUnderPointer(event);
    const bool isMove = event.type() == QEvent::MouseMove;
    if (isMove && (IsUnderPointer(event) || event.buttons() != Qt::NoButton))
        emit MouseMoved(pixel.x(), pixel.y());
    if (!isMove && IsUnderPointer(event))
        emit MousePressed(pixel.x(), pixel.y());
}

// Reports events of this view that the parent got. Qt chooses the widget by a position that is rounded up to
// whole logical pixels. So at 200 % the parent gets the events of our last row and column.
bool TImageView::eventFilter(QObject* parent, QEvent* event)
{
    static const QList<QEvent::Type> Types { QEvent::MouseMove, QEvent::MouseButtonPress,
        QEvent::MouseButtonDblClick };
    if (!Types.contains(event->type()) || !IsUnderPointer(*static_cast<QMouseEvent*>(event)))
        return QWidget::eventFilter(parent, event);
    Report(*static_cast<QMouseEvent*>(event));
    return true;
}

void TImageView::mouseMoveEvent(QMouseEvent* event)
{
    Report(*event);
}

void TImageView::mousePressEvent(QMouseEvent* event)
{
    Report(*event);
}

void TImageView::dragEnterEvent(QDragEnterEvent* event)
{
    if (!OfferedImage(*event).isEmpty())
        AcceptCopy(*event);
}

void TImageView::dropEvent(QDropEvent* event)
{
    const QString file = OfferedImage(*event);
    if (file.isEmpty())
        return;
    AcceptCopy(*event);
    emit FileDropped(file);
}

} // namespace Corvadine

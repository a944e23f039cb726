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

// Returns the path of the dragged file if it has the extension of an image, in a format that can be read or
// not. Otherwise returns an empty path.
QString OfferedImage(const QDropEvent& event)
{
    const QString file = OfferedFile(event);
    return IsRecognisedImageName(file) || IsUnreadImageName(file) ? file : QString();
}

// Returns the pixel that contains a fractional position.
int PixelAt(double position)
{
    return static_cast<int>(std::floor(position));
}

} // namespace

TImageView::TImageView(QWidget* parent) : QWidget(parent), FImage(BlankSourceImage())
{
    setMouseTracking(true);
    setAcceptDrops(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
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
    return ColorUnder(QPointF(x, y) * devicePixelRatioF(), FImage, DeviceSize());
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

void TImageView::mouseMoveEvent(QMouseEvent* event)
{
    emit MouseMoved(PixelAt(event->position().x()), PixelAt(event->position().y()));
}

void TImageView::mousePressEvent(QMouseEvent* event)
{
    emit MousePressed(PixelAt(event->position().x()), PixelAt(event->position().y()));
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

#include "images/ImageView.h"

#include "base/Color.h"
#include "base/Files.h"
#include "base/PathRules.h"
#include "images/RecognisedImage.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QUrl>

#include <cmath>
#include <exception>

namespace Corvadine {

namespace {

constexpr int SideLength = 230;

// The one readable image file that is being dragged; empty if it is anything else.
QString DraggedImage(const QMimeData* data)
{
    const QList<QUrl> urls = data->urls();
    if (urls.size() != 1 || !urls.first().isLocalFile())
        return {};
    const QString path = urls.first().toLocalFile();
    return IsRecognisedImageName(path) && FileExists(path) ? AbsolutePath(path) : QString();
}

// The pixel that a position of a finer grid falls in.
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

void TImageView::Load(const QString& path, TDecoderChoice choice)
{
    try {
        Show(LoadSourceImage(path, choice), path);
    } catch (const std::exception&) { // out of memory is one of the ways in which a file does not decode
        Clear();
    }
}

void TImageView::Clear()
{
    Show(BlankSourceImage(), {});
}

void TImageView::Show(const QImage& image, const QString& fileName)
{
    FImage = image;
    FFileName = fileName;
    FFitted = {};
    // What the picture tells those who see it.
    setAccessibleDescription(
        IsEmpty() ? QString() : QStringLiteral("%1, %2").arg(FileNameOf(fileName), SizeText(image.size())));
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

// Where the picture lies, in device pixels: fitted there, its edges are sharp at every scaling.
QRect TImageView::FittedRect() const
{
    const QSize view = (QSizeF(size()) * devicePixelRatioF()).toSize();
    const QSize fitted = FImage.size().scaled(view, Qt::KeepAspectRatio).expandedTo({ 1, 1 });
    return { (view.width() - fitted.width()) / 2, (view.height() - fitted.height()) / 2, fitted.width(),
        fitted.height() };
}

int TImageView::ImageColumn(int viewX) const
{
    const QRect fitted = FittedRect();
    return PixelAt((viewX * devicePixelRatioF() - fitted.x()) * FImage.width() / fitted.width());
}

int TImageView::ImageRow(int viewY) const
{
    const QRect fitted = FittedRect();
    return PixelAt((viewY * devicePixelRatioF() - fitted.y()) * FImage.height() / fitted.height());
}

int TImageView::ColorAtImagePixel(int column, int row) const
{
    return FImage.valid(column, row) ? TColor::FromRgb(FImage.pixel(column, row)).ToStored() : -1;
}

void TImageView::paintEvent(QPaintEvent* event)
{
    QPainter painter(this);
    painter.fillRect(
        event->rect(), FContentColor.isValid() ? FContentColor : palette().color(QPalette::Base));
    if (IsEmpty())
        return;
    const QRect fitted = FittedRect();
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
    if (DraggedImage(event->mimeData()).isEmpty())
        return;
    event->setDropAction(Qt::CopyAction); // a move would let the file manager delete its file
    event->accept();
}

void TImageView::dropEvent(QDropEvent* event)
{
    const QString path = DraggedImage(event->mimeData());
    if (path.isEmpty())
        return;
    event->setDropAction(Qt::CopyAction);
    event->accept();
    emit FileDropped(path);
}

} // namespace Corvadine

#include "widgets/ThumbnailView.h"

#include "images/RecognisedImage.h"
#include "widgets/ThumbnailDelegate.h"
#include "widgets/ThumbnailModel.h"

#include <QDir>
#include <QElapsedTimer>
#include <QEvent>
#include <QScrollBar>

namespace Corvadine {

namespace {

constexpr qint64 SliceMilliseconds = 8; // half a frame at 60 Hz; the window paints in the other half

QStringList ImageFilesOf(const QString& folder)
{
    QStringList files;
    const QDir directory(folder);
    if (folder.isEmpty())
        return files;
    for (const QString& name : directory.entryList(QDir::Files, QDir::Name | QDir::IgnoreCase))
        if (IsRecognisedImageName(name))
            files.append(directory.filePath(name));
    return files;
}

} // namespace

TThumbnailView::TThumbnailView(QWidget* parent) : QListView(parent), FModel(new TThumbnailModel(this))
{
    setModel(FModel);
    setItemDelegate(new TThumbnailDelegate(this));
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(SingleSelection);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(ScrollPerPixel);
    setFlow(LeftToRight);
    setWrapping(true);
    setResizeMode(Adjust);
    setUniformItemSizes(true);
    connect(&FSliceTimer, &QTimer::timeout, this, &TThumbnailView::FillSlice);
}

bool TThumbnailView::Fill(const QString& folder)
{
    Clear();
    FModel->SetPixelRatio(devicePixelRatioF());
    FPending = ImageFilesOf(folder);
    while (Count() == 0 && !FPending.isEmpty())
        FModel->Append(FPending.takeFirst());
    if (!FPending.isEmpty())
        FSliceTimer.start();
    return Count() > 0;
}

void TThumbnailView::FillSlice()
{
    QElapsedTimer clock;
    clock.start();
    while (!FPending.isEmpty() && clock.elapsed() < SliceMilliseconds)
        FModel->Append(FPending.takeFirst());
    if (FPending.isEmpty())
        FSliceTimer.stop();
}

void TThumbnailView::Append(const QString& file, const QString& info)
{
    FModel->SetPixelRatio(devicePixelRatioF());
    FModel->Append(file, info);
}

void TThumbnailView::Clear()
{
    FSliceTimer.stop();
    FPending.clear();
    FModel->Clear();
}

int TThumbnailView::Count() const
{
    return FModel->rowCount();
}

void TThumbnailView::SelectFirst()
{
    setCurrentIndex(FModel->index(0));
}

void TThumbnailView::SetContentColor(const QColor& color)
{
    QPalette own;
    if (color.isValid())
        own.setColor(QPalette::Base, color);
    setPalette(own);
}

void TThumbnailView::resizeEvent(QResizeEvent* event)
{
    SpreadColumns();
    QListView::resizeEvent(event);
}

void TThumbnailView::paintEvent(QPaintEvent* event)
{
    FModel->SetPixelRatio(devicePixelRatioF()); // the window may have moved to another screen
    QListView::paintEvent(event);
}

void TThumbnailView::changeEvent(QEvent* event)
{
    QListView::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        SpreadColumns();
}

// Makes the columns share the whole width. When QListView wraps items, it subtracts the width of the scroll
// bar even if the bar is hidden. QListView also needs one pixel more than the columns take.
void TThumbnailView::SpreadColumns()
{
    const int width = maximumViewportSize().width()
        - style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, verticalScrollBar()) - 1;
    const QSize cell = TThumbnailDelegate::CellSize(fontMetrics());
    const int columns = std::max(1, width / cell.width());
    const QSize grid(std::max(cell.width(), width / columns), cell.height());
    if (grid == gridSize())
        return;
    setGridSize(grid);
    verticalScrollBar()->setSingleStep(
        grid.height() / 3); // a notch of the wheel is three steps, so it scrolls by one row
}

} // namespace Corvadine

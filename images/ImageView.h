#pragma once

#include "images/SourceImage.h"

#include <QColor>
#include <QImage>
#include <QPixmap>
#include <QRect>
#include <QString>
#include <QWidget>

class QMimeData;

namespace Corvadine {

// Shows one image file whole, as large as fits with its aspect kept, centred on a background, and tells where
// the pointer is. It has no zoom, scrolling or selection of its own. Use on the window's thread.
class TImageView : public QWidget {
    Q_OBJECT
public:
    explicit TImageView(QWidget* parent = nullptr);

    // Shows `path` instead of what was there. A file that does not decode leaves the view empty; nothing is
    // thrown.
    void Load(const QString& path, TDecoderChoice choice);

    void Clear();
    bool IsEmpty() const { return FFileName.isEmpty(); }

    // The picture at full size, as LoadSourceImage gives it; BlankSourceImage() while the view is empty.
    const QImage& Image() const { return FImage; }

    // The path that was loaded; empty while the view is empty.
    const QString& FileName() const { return FFileName; }

    // What lies behind and around the picture. Until this is called, or with an invalid colour: the palette's
    // base.
    void SetContentColor(const QColor& color);

    // The image column or row under a position in the view, as the picture is fitted now. Not clipped: in the
    // margin beside the picture the result is negative or past the last one.
    int ImageColumn(int viewX) const;
    int ImageRow(int viewY) const;

    // The image's own pixel, alpha ignored, with red in the lowest byte, then green and blue; -1 outside the
    // image.
    int ColorAtImagePixel(int column, int row) const;

    QSize sizeHint() const override;

signals:
    // Positions in the view, outside of it too while a button is held. Moves are told without a button as
    // well.
    void MouseMoved(int x, int y);
    void MousePressed(int x, int y); // any button

    // One file whose extension says that it can be read was dropped here; `path` is absolute.
    void FileDropped(const QString& path);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void Show(const QImage& image, const QString& fileName);
    QRect FittedRect() const;

    QImage FImage;
    QString FFileName;
    QPixmap FFitted; // FImage in device pixels, so that a repaint does not scale again; null: make it anew
    QColor FContentColor;
};

} // namespace Corvadine

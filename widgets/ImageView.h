#pragma once

#include "images/SourceImage.h"

#include <QColor>
#include <QImage>
#include <QPixmap>
#include <QString>
#include <QWidget>

class QMimeData;

namespace Corvadine {

// Shows the whole picture of an image file, centered on a background. The picture is as large as the view
// allows without changing its aspect ratio. The view reports mouse positions and dropped files. It has no
// zoom, scrolling or selection. Use on the window's thread.
class TImageView : public QWidget {
    Q_OBJECT
public:
    // REQUIRES: `parent` stays the parent.
    explicit TImageView(QWidget* parent = nullptr);

    // Shows the picture of `path`. If the file does not decode, the view becomes empty and nothing is thrown.
    void Load(const QString& path);

    void Clear();
    bool IsEmpty() const { return FIsEmpty; }

    // Returns the picture at full size, as LoadSourceImage() returned it. Returns BlankSourceImage() while
    // the view is empty.
    const QImage& Image() const { return FImage; }

    // Sets the color behind and around the picture. Without a call, or with an invalid `color`, the palette's
    // base color is used.
    void SetContentColor(const QColor& color);

    // Returns the color of the picture under a device pixel of the view. The result has the form that
    // ColorUnder() describes.
    int ColorAt(int x, int y) const;

    QSize sizeHint() const override;

signals:
    // The pointer moved over the view, with or without a button held. The position is a device pixel of the
    // view. It can lie outside of the view while a button is held.
    void MouseMoved(int x, int y);

    // Any mouse button was pressed over the view. The position is a device pixel of the view.
    void MousePressed(int x, int y);

    // One file with the extension of an image was dropped here. The program may be unable to read the format
    // of the file. `path` is absolute.
    void FileDropped(const QString& path);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* parent, QEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void Show(const QImage& image, const QString& description);
    QSize DeviceSize() const;
    QPoint PixelUnderPointer(const QMouseEvent& event) const;
    bool IsUnderPointer(const QMouseEvent& event) const;
    void Report(const QMouseEvent& event);

    QImage FImage;
    bool FIsEmpty = true;
    QPixmap FFitted; // FImage scaled to device pixels; null until the view is painted
    QColor FContentColor;
};

} // namespace Corvadine

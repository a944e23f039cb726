#pragma once

#include <QListView>
#include <QStringList>
#include <QTimer>

namespace Corvadine {

class TThumbnailModel;

// The image files of a folder or of a run as a grid of thumbnails. Below each thumbnail are the dimensions
// and the file name. The columns share the whole width. The view is read-only: a click selects one thumbnail
// and does not move the keyboard focus. Use on the window's thread.
class TThumbnailView : public QListView {
    Q_OBJECT
public:
    explicit TThumbnailView(QWidget* parent = nullptr);

    // Shows the image files that lie directly in `folder`, sorted by name. Hidden files and files that do not
    // decode are left out. Returns whether there is an image. The first image is shown before this function
    // returns. The event loop then adds the others, a few at a time, until all are shown. Clear() or the next
    // Fill() stops the adding.
    bool Fill(const QString& folder);

    // Adds the thumbnail of the first picture in `file` at the end. The line below the picture is `info`, or
    // the dimensions if `info` is empty. A file that does not decode is left out.
    void Append(const QString& file, const QString& info = {});

    void Clear();
    int Count() const;
    void SelectFirst(); // does nothing while the view is empty

    // Sets the color behind the thumbnails. Without a call, or with an invalid `color`, the palette's base
    // color is used.
    void SetContentColor(const QColor& color);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void FillSlice();
    void SpreadColumns();

    TThumbnailModel* FModel;
    QStringList FPending; // paths that Fill() found and has not decoded yet
    QTimer FSliceTimer;   // runs while FPending is not empty; fires when no event is pending
};

} // namespace Corvadine

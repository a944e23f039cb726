#pragma once

#include <QListView>
#include <QStringList>
#include <QTimer>

namespace Corvadine {

class TThumbnailModel;

// The image files of a folder or of a run as a grid of thumbnails, with the dimensions and the file name
// under each. Its columns share the whole width. Only looked at: one thumbnail can be selected with the
// mouse, and the keyboard focus stays where it is. Use on the window's thread.
class TThumbnailView : public QListView {
    Q_OBJECT
public:
    explicit TThumbnailView(QWidget* parent = nullptr);

    // Shows the image files that lie directly in `folder`, by name, without hidden files and those that do
    // not decode. Returns whether there is one. The first is there on return; the others follow piece by
    // piece from the event loop, a few milliseconds each time, until all are there or Clear() or Fill() is
    // called.
    bool Fill(const QString& folder);

    // Whether files of the last Fill() are still to come.
    bool IsFilling() const { return FSliceTimer.isActive(); }

    // Adds the thumbnail of `file` (its first picture) at the end; `info` stands in for its dimensions unless
    // it is empty. A file that does not decode is left out.
    void Append(const QString& file, const QString& info = {});

    void Clear();
    int Count() const;
    void SelectFirst(); // does nothing while there is none

    // The names of the files shown, without their folders.
    QStringList FileNames() const;

    // What lies behind the thumbnails. Until this is called, or with an invalid colour: the palette's base.
    void SetContentColor(const QColor& color);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void FillSlice();
    void SpreadColumns();

    TThumbnailModel* FModel;
    QStringList FPending; // paths that Fill() found and that have not been looked at yet
    QTimer FSliceTimer;   // fires whenever the event loop has nothing else; runs only while there is work
};

} // namespace Corvadine

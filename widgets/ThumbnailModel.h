#pragma once

#include <QAbstractListModel>
#include <QCache>
#include <QHash>
#include <QImage>
#include <QList>
#include <QString>

namespace Corvadine {

struct TThumbnail;

// The thumbnails of image files, one per row, in the order in which they were appended. The display text is
// the file's name. The decoration is the file's picture as a QImage. The device pixel ratio of the QImage is
// set so that the picture fits into ThumbnailSide logical pixels.
//
// The model keeps pictures in memory up to a fixed amount and drops the others. A dropped picture is read
// from its file again when it is needed. The picture is null if the file no longer decodes. Use on the
// window's thread.
class TThumbnailModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum TRole {
        InfoRole = Qt::UserRole, // the line above the file name
    };

    static constexpr int ThumbnailSide = 160; // logical pixels

    explicit TThumbnailModel(QObject* parent = nullptr);

    void Clear();

    // Adds a row for the first picture in `file`. The info line is `info`, or the picture's dimensions if
    // `info` is empty. Returns false and adds no row if the file does not decode.
    bool Append(const QString& file, const QString& info = {});

    // Sets how many device pixels a logical pixel of the screen has. At first this ratio is 1. After a
    // change, each picture is read again when it is needed.
    void SetPixelRatio(double ratio);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    struct TRow {
        QString File;
        QString Info;
        QSize Size; // pixels of the file's picture
    };
    struct TContent {
        qint64 Bytes = 0;
        std::size_t Hash = 0;
        QString Extension; // decides which decoder reads the file
        bool operator==(const TContent&) const = default;
        friend std::size_t qHash(const TContent& content, std::size_t) { return content.Hash; }
    };
    static TContent ContentOf(const QString& file);
    TThumbnail Load(const QString& file);
    QImage Picture(int row) const;
    void Keep(int row, const QImage& picture) const;

    QList<TRow> FRows;
    mutable QCache<int, QImage> FPictures; // the key is the row, the cost is in KiB
    QHash<TContent, int> FContents;        // for each content, the row that was decoded last
    double FPixelRatio = 1;
};

} // namespace Corvadine

#pragma once

#include <QAbstractListModel>
#include <QCache>
#include <QHash>
#include <QImage>
#include <QList>
#include <QString>

namespace Corvadine {

struct TThumbnail;

// The thumbnails of image files, one a row, in the order in which they were appended. The display text is the
// file's name, the decoration its picture (a QImage whose pixel ratio makes it fit ThumbnailSide).
//
// Pictures are kept while they fit a fixed amount of memory; one that had to go is read from its file again
// when it is next asked for, and is empty if that fails by then. Use on the window's thread.
class TThumbnailModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum TRole {
        InfoRole = Qt::UserRole, // the line above the file name
        FileRole,                // the file's path as it was appended
    };

    static constexpr int ThumbnailSide = 160; // logical pixels

    explicit TThumbnailModel(QObject* parent = nullptr);

    void Clear();

    // Adds a row for the first picture of `file`; `info` stands in for its dimensions unless it is empty.
    // False, and no row, if the file does not decode.
    bool Append(const QString& file, const QString& info = {});

    // Device pixels per logical pixel that pictures are made for. After a change they are made anew, when
    // asked for. At start 1.
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
        QString Extension; // part of it, since it chooses the decoder
        bool operator==(const TContent&) const = default;
        friend std::size_t qHash(const TContent& content, std::size_t) { return content.Hash; }
    };
    static TContent ContentOf(const QString& file);
    TThumbnail Load(const QString& file);
    QImage Picture(int row) const;
    void Keep(int row, const QImage& picture) const;

    QList<TRow> FRows;
    mutable QCache<int, QImage> FPictures; // by row, cost in KiB
    QHash<TContent, int> FContents;        // the first row of each
    double FPixelRatio = 1;
};

} // namespace Corvadine

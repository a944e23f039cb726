#include "images/ThumbnailModel.h"

#include "base/PathRules.h"
#include "images/SourceImage.h"

#include <QFile>

#include <cmath>
#include <exception>

namespace Corvadine {

namespace {

// 650 pictures on a plain screen; what a generation run writes is never evicted.
constexpr int PictureMemoryInKiB = 64 * 1024;

// The thumbnail of `file` for a screen of `ratio` device pixels per logical pixel; a null picture if the file
// does not decode. A file smaller than a thumbnail is shown at its own size.
TThumbnail LoadForScreen(const QString& file, double ratio)
{
    const int side = static_cast<int>(std::ceil(TThumbnailModel::ThumbnailSide * ratio));
    TThumbnail thumbnail;
    try {
        thumbnail = LoadThumbnail(file, { side, side });
    } catch (const std::exception&) {
        return {};
    }
    const int longest = std::max(thumbnail.Size.width(), thumbnail.Size.height());
    const int shown = std::min(longest, TThumbnailModel::ThumbnailSide);
    const QSize pixels = thumbnail.Picture.size();
    thumbnail.Picture.setDevicePixelRatio(double(std::max(pixels.width(), pixels.height())) / shown);
    return thumbnail;
}

} // namespace

TThumbnailModel::TThumbnailModel(QObject* parent) : QAbstractListModel(parent), FPictures(PictureMemoryInKiB)
{
}

void TThumbnailModel::Clear()
{
    beginResetModel();
    FRows.clear();
    FPictures.clear();
    FContents.clear();
    endResetModel();
}

bool TThumbnailModel::Append(const QString& file, const QString& info)
{
    const TThumbnail thumbnail = Load(file);
    if (thumbnail.Picture.isNull())
        return false;
    const int row = rowCount();
    beginInsertRows({}, row, row);
    FRows.append({ file, info.isEmpty() ? SizeText(thumbnail.Size) : info, thumbnail.Size });
    Keep(row, thumbnail.Picture);
    endInsertRows();
    return true;
}

// Files too large to be one of a generated set have an empty content.
TThumbnailModel::TContent TThumbnailModel::ContentOf(const QString& path)
{
    constexpr qint64 LargestHashed = qint64 { 4 } * 1024 * 1024;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > LargestHashed)
        return {};
    const QByteArray bytes = file.readAll();
    return { bytes.size(), qHashBits(bytes.constData(), static_cast<std::size_t>(bytes.size())),
        ExtensionOf(path) };
}

// A generated set holds the same bytes under several names, the largest four times: a light and a dark launch
// image for two devices. Decoding them costs more than everything else about a thumbnail.
TThumbnail TThumbnailModel::Load(const QString& file)
{
    const TContent content = ContentOf(file);
    if (const auto equal = FContents.constFind(content); equal != FContents.cend())
        if (const QImage* picture = FPictures.object(*equal))
            return { *picture, FRows.at(*equal).Size };
    TThumbnail thumbnail = LoadForScreen(file, FPixelRatio);
    if (content.Bytes > 0 && !thumbnail.Picture.isNull())
        FContents.insert(content, rowCount());
    return thumbnail;
}

void TThumbnailModel::SetPixelRatio(double ratio)
{
    if (FPixelRatio == ratio)
        return;
    FPixelRatio = ratio;
    FPictures.clear();
}

int TThumbnailModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(FRows.size());
}

QVariant TThumbnailModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const TRow& row = FRows.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole: // for names that are too long for their column
        return FileNameOf(row.File);
    case Qt::DecorationRole:
        return Picture(index.row());
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1, %2").arg(FileNameOf(row.File), row.Info);
    case InfoRole:
        return row.Info;
    case FileRole:
        return row.File;
    default:
        return {};
    }
}

QImage TThumbnailModel::Picture(int row) const
{
    if (const QImage* kept = FPictures.object(row))
        return *kept;
    QImage picture = LoadForScreen(FRows.at(row).File, FPixelRatio).Picture;
    Keep(row, picture);
    return picture;
}

void TThumbnailModel::Keep(int row, const QImage& picture) const
{
    FPictures.insert(row, new QImage(picture), 1 + picture.sizeInBytes() / 1024);
}

} // namespace Corvadine

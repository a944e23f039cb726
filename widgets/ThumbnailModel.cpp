#include "widgets/ThumbnailModel.h"

#include "base/PathRules.h"
#include "images/SourceImage.h"

#include <QFile>

#include <cmath>
#include <exception>

namespace Corvadine {

namespace {

// Enough for about 650 pictures at pixel ratio 1. A generation run writes fewer.
constexpr int PictureMemoryInKiB = 64 * 1024;

// Returns the thumbnail of `file` for a screen with `ratio` device pixels per logical pixel. A picture
// smaller than a thumbnail keeps its size. The thumbnail's picture is null if the file does not decode.
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

// Returns a key of the file's content. Load() uses the keys to find equal files. The key is empty if the file
// cannot be read or is too large to be a generated image.
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

// Equal files share one picture, because decoding is the slowest step. For example, a generation run writes
// the largest launch image under four names: light and dark, for two devices.
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
    case Qt::ToolTipRole: // the whole name, because the cell may cut it
        return FileNameOf(row.File);
    case Qt::DecorationRole:
        return Picture(index.row());
    case Qt::AccessibleTextRole:
        return u"%1, %2"_s.arg(FileNameOf(row.File), row.Info);
    case InfoRole:
        return row.Info;
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

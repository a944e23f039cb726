#include "support/help/ChmArchive.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/help/MspackMemory.h"

#include <QFileInfo>
#include <QtEndian>

namespace Corvadine {

namespace {

const QString Attempt = u"read the help file"_s;

constexpr qint64 MaxFileSize = 64 << 20;
constexpr qint64 MaxObjectSize = 16 << 20;

// Returns the little-endian number at `position` of a table, or 0 if the table ends before the number does.
quint32 NumberAt(const QByteArray& table, qsizetype position)
{
    constexpr qsizetype Size = sizeof(quint32);
    const QByteArray bytes = table.mid(position, Size);
    return bytes.size() < Size ? 0 : qFromLittleEndian<quint32>(bytes.constData());
}

quint16 SmallNumberAt(const QByteArray& table, qsizetype position)
{
    constexpr qsizetype Size = sizeof(quint16);
    const QByteArray bytes = table.mid(position, Size);
    return bytes.size() < Size ? quint16(0) : qFromLittleEndian<quint16>(bytes.constData());
}

// Returns the text at `position`, up to a zero byte or the end of the table.
QString TextAt(const QByteArray& table, qsizetype position)
{
    return QString::fromUtf8(table.mid(position).constData());
}

QString AsPath(const QString& name)
{
    return name.isEmpty() || name.startsWith(u'/') ? name : u'/' + name;
}

} // namespace

// The objects in the directory of a help file. Read() decompresses them with libmspack.
class TChmArchive::TObjects {
public:
    explicit TObjects(const QByteArray& file) : FSize(file.size()), FMemory(file)
    {
        FDecompressor = mspack_create_chm_decompressor(&FMemory);
        if (FDecompressor == nullptr)
            return;
        FHeader = FDecompressor->open(FDecompressor, "");
        for (mschmd_file* object = FHeader != nullptr ? FHeader->files : nullptr; object != nullptr;
             object = object->next)
            FByName.insert(KeyOf(QString::fromUtf8(object->filename)), object);
    }

    ~TObjects()
    {
        if (FHeader != nullptr)
            FDecompressor->close(FDecompressor, FHeader);
        if (FDecompressor != nullptr)
            mspack_destroy_chm_decompressor(FDecompressor);
    }

    Q_DISABLE_COPY_MOVE(TObjects)

    // Returns whether the file has its full length. A file that was cut off can still be opened if its
    // directory is complete.
    bool IsWhole() const { return FHeader != nullptr && FHeader->length <= FSize; }

    std::optional<QByteArray> Read(const QString& path)
    {
        mschmd_file* object = FByName.value(KeyOf(path));
        if (object == nullptr || object->length < 0 || object->length > MaxObjectSize)
            return {};
        FMemory.StartOutput(object->length);
        if (FDecompressor->extract(FDecompressor, object, "") != MSPACK_ERR_OK)
            return {};
        return FMemory.TakeOutput();
    }

private:
    static QString KeyOf(const QString& path) { return path.toLower(); }

    qsizetype FSize;
    TMspackMemory FMemory;
    mschm_decompressor* FDecompressor = nullptr;
    mschmd_header* FHeader = nullptr;
    QHash<QString, mschmd_file*> FByName;
};

TChmArchive::TChmArchive(const QString& path)
{
    if (QFileInfo(path).size() > MaxFileSize)
        throw TError(TErrorKind::BadInput, Attempt, path, u"it is too large"_s);
    FObjects = std::make_unique<TObjects>(ReadFile(path, Attempt));
    if (!FObjects->IsWhole())
        throw TError(TErrorKind::BadInput, Attempt, path, u"it is damaged"_s);
    ReadSystem();
    ReadTopics();
}

TChmArchive::~TChmArchive() = default;

std::optional<QByteArray> TChmArchive::Read(const QString& path) const
{
    return FObjects->Read(path);
}

// "/#SYSTEM" begins with a version, and entries follow. Each entry has a code, the length of its data, and
// the data.
// https://www.nongnu.org/chmspec/latest/Internal.html#SYSTEM
void TChmArchive::ReadSystem()
{
    enum TCode : quint16 { Contents = 0, Home = 2, Title = 3 };
    constexpr qsizetype VersionSize = 4;
    constexpr qsizetype HeadSize = 4;
    const QByteArray table = Read(u"/#SYSTEM"_s).value_or(QByteArray());
    for (qsizetype at = VersionSize; at + HeadSize <= table.size();
         at += HeadSize + SmallNumberAt(table, at + 2)) {
        const QString text = TextAt(table.mid(at + HeadSize, SmallNumberAt(table, at + 2)), 0);
        switch (SmallNumberAt(table, at)) {
        case Contents:
            FContentsFile = AsPath(text);
            break;
        case Home:
            FHomePage = AsPath(text);
            break;
        case Title:
            FTitle = text;
            break;
        default:
            break;
        }
    }
}

// "/#IVB" begins with its size, and pairs follow. A pair has the number of a topic, and the offset of a name
// in "/#STRINGS". The name at this offset is the name of the topic's page.
// https://www.nongnu.org/chmspec/latest/Internal.html#IVB
void TChmArchive::ReadTopics()
{
    constexpr qsizetype HeadSize = 4;
    constexpr qsizetype PairSize = 8;
    const QByteArray table = Read(u"/#IVB"_s).value_or(QByteArray());
    const QByteArray strings = Read(u"/#STRINGS"_s).value_or(QByteArray());
    for (qsizetype at = HeadSize; at + PairSize <= table.size(); at += PairSize) {
        const QString page = AsPath(TextAt(strings, NumberAt(table, at + 4)));
        if (!page.isEmpty())
            FTopics.insert(NumberAt(table, at), page);
    }
}

} // namespace Corvadine

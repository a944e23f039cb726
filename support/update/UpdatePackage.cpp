#include "support/update/UpdatePackage.h"

#include "base/Error.h"
#include "base/Files.h"
#include "support/update/rules/UpdateNames.h"

#include <archive.h>
#include <archive_entry.h>

#include <array>
#include <cerrno>

namespace Corvadine {

namespace {

constexpr std::size_t BlockBytes = 65'536;

} // namespace

// Reads the archive through QFile, because the library cannot open every path on every system.
struct TPackageExtractor::TInput {
    QFile File;
    std::array<char, BlockBytes> Block {};

    static la_ssize_t Read(::archive* archive, void* self, const void** block)
    {
        auto& input = *static_cast<TInput*>(self);
        *block = input.Block.data();
        const qint64 count = input.File.read(input.Block.data(), static_cast<qint64>(input.Block.size()));
        if (count < 0)
            archive_set_error(archive, EIO, "%s", qPrintable(input.File.errorString()));
        return static_cast<la_ssize_t>(count);
    }

    static la_int64_t Seek(::archive*, void* self, la_int64_t offset, int origin)
    {
        QFile& file = static_cast<TInput*>(self)->File;
        const qint64 base = origin == SEEK_SET ? 0 : origin == SEEK_CUR ? file.pos() : file.size();
        return file.seek(base + offset) ? file.pos() : ARCHIVE_FATAL;
    }
};

namespace {

TError Unexpected(const QString& path, const QString& reason)
{
    return { TErrorKind::BadInput, u"unpack"_s, path, reason };
}

TError Damaged(const QString& path, ::archive* archive)
{
    const char* reason = archive_error_string(archive);
    return Unexpected(path, reason ? QString::fromLocal8Bit(reason) : u"it is damaged"_s);
}

TError NotWritten(const QFile& file)
{
    return { TErrorKind::Io, u"write"_s, file.fileName(), file.errorString() };
}

} // namespace

TPackageExtractor::TPackageExtractor(const QString& path, TPackagePlan plan)
    : FPlan(std::move(plan)), FInput(std::make_unique<TInput>()), FArchive(nullptr)
{
    FInput->File.setFileName(path);
    OpenForReading(FInput->File, u"read the package"_s);
    FArchive = archive_read_new();
    archive_read_support_format_cab(FArchive);
    archive_read_support_format_zip(FArchive);
    archive_read_set_read_callback(FArchive, TInput::Read);
    archive_read_set_seek_callback(FArchive, TInput::Seek);
    archive_read_set_callback_data(FArchive, FInput.get());
    if (archive_read_open1(FArchive) != ARCHIVE_OK) {
        const TError error = Damaged(path, FArchive);
        archive_read_free(FArchive);
        throw error;
    }
}

TPackageExtractor::~TPackageExtractor()
{
    archive_read_free(FArchive);
}

bool TPackageExtractor::Step()
{
    constexpr qint64 BytesPerStep = 1'048'576;
    if (!FOutput.isOpen())
        return NextEntry();
    for (const qint64 limit = FWritten + BytesPerStep; FWritten < limit;)
        if (!CopyBlock()) {
            CompleteEntry();
            break;
        }
    return true;
}

// Begins the next entry. Returns false at the end of the archive. Throws TError for an entry that the archive
// must not hold. At the end of the archive, throws TError if a planned file is missing.
bool TPackageExtractor::NextEntry()
{
    const QString path = FInput->File.fileName();
    archive_entry* entry = nullptr;
    const int result = archive_read_next_header(FArchive, &entry);
    if (result == ARCHIVE_EOF) {
        for (auto wanted = FPlan.Wanted.cbegin(); wanted != FPlan.Wanted.cend(); ++wanted)
            if (!FSeen.contains(wanted.key()))
                throw Unexpected(path, u"%1 is missing"_s.arg(wanted.key()));
        return false;
    }
    if (result != ARCHIVE_OK)
        throw Damaged(path, FArchive);
    const char* name = archive_entry_pathname(entry);
    FEntry = CheckedTarget(QString::fromLatin1(name ? name : ""));
    if (archive_entry_filetype(entry) != AE_IFREG || archive_entry_hardlink(entry))
        throw Unexpected(path, u"%1 is not a regular file"_s.arg(FEntry));
    if (!FPlan.Known.contains(FEntry))
        throw Unexpected(path, u"the publisher's list does not name %1"_s.arg(FEntry));
    if (FSeen.contains(FEntry))
        throw Unexpected(path, u"%1 is there twice"_s.arg(FEntry));
    FSeen.insert(FEntry);

    const auto wanted = FPlan.Wanted.constFind(FEntry);
    if (wanted == FPlan.Wanted.cend())
        return true; // the library skips the entry's bytes
    FOutput.setFileName(wanted->Path);
    FWritten = 0;
    if (!FOutput.open(QIODevice::WriteOnly | QIODevice::NewOnly))
        throw NotWritten(FOutput);
    return true;
}

// Copies some bytes of the entry. Returns false at the end of the entry.
bool TPackageExtractor::CopyBlock()
{
    std::array<char, BlockBytes> block; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by the read
    const la_ssize_t count = archive_read_data(FArchive, block.data(), block.size());
    if (count < 0)
        throw Damaged(FInput->File.fileName(), FArchive);
    if (count == 0)
        return false;
    if (FWritten + count > FPlan.Wanted[FEntry].Size)
        throw Unexpected(FInput->File.fileName(), u"%1 is larger than announced"_s.arg(FEntry));
    if (FOutput.write(block.data(), count) != count)
        throw NotWritten(FOutput);
    FWritten += count;
    return true;
}

void TPackageExtractor::CompleteEntry()
{
    const TPackagePlan::TWanted& wanted = FPlan.Wanted[FEntry];
    if (wanted.IsExact && FWritten != wanted.Size)
        throw Unexpected(FInput->File.fileName(), u"%1 is smaller than announced"_s.arg(FEntry));
    if (!FOutput.flush())
        throw NotWritten(FOutput);
    FOutput.close();
}

} // namespace Corvadine

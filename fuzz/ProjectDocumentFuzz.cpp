#include "base/Error.h"
#include "base/Files.h"
#include "fuzz/Fuzzing.h"
#include "project/ProjectDocument.h"
#include "project/ProjectUpdater.h"

#include <QFile>

using namespace Corvadine;

namespace {

const QString Marker = u"images\\Corvadine-7f3a.png"_s; // no input has this text by chance

std::vector<TElementChange> Edit(TProjectDocument& document)
{
    std::vector<TElementChange> changes;
    for (const QString& id : { u"Icon_MainIcon"_s, u"ProjectGuid"_s, u"a"_s }) {
        const auto made = document.SetText(id, Marker);
        changes.insert(changes.end(), made.begin(), made.end());
    }
    return changes;
}

// Searches for a `piece` of the edited file in `original`, beginning at `from`. Returns the position after
// the piece, or -1 if the piece is not found. The edit may have replaced <X/> by <X>text</X>. Then the piece
// before the text has a ">" more, and the piece after the text has an end tag more. Therefore the search also
// tries the piece without the added ">" and without the added end tag. It takes the match that ends first.
qsizetype EndOf(const QByteArray& piece, const QByteArray& original, qsizetype from)
{
    const qsizetype start = piece.startsWith("</") ? piece.indexOf('>') + 1 : 0;
    qsizetype first = -1;
    for (const QByteArray& form : { piece, piece.mid(start) })
        for (const qsizetype cut : { 0, form.endsWith('>') ? 1 : 0 }) {
            const qsizetype found = original.indexOf(form.chopped(cut), from);
            const qsizetype end = found < 0 ? -1 : found + form.size() - cut;
            first = end >= 0 && (first < 0 || end < first) ? end : first;
        }
    return first;
}

// Requires that the pieces between the edited texts are found in the original, in the same order.
void RequireUntouchedElsewhere(const QByteArray& original, const QByteArray& edited)
{
    const QByteArray marker = Marker.toUtf8();
    qsizetype at = 0;
    qsizetype from = 0;
    for (qsizetype end = edited.indexOf(marker); end >= 0; end = edited.indexOf(marker, from)) {
        at = EndOf(edited.mid(from, end - from), original, at);
        Fuzzing::Require(at >= 0);
        from = end + marker.size();
    }
    const QByteArray last = edited.mid(from);
    Fuzzing::Require(EndOf(last, original, at) >= 0);
    Fuzzing::Require(original.endsWith(last) || original.endsWith(last.mid(last.indexOf('>') + 1)));
}

// Requires that the updater writes the same bytes as the same edit in memory, and keeps the old bytes as a
// backup. Requires that a second update writes nothing.
void RequireUpdate(const QByteArray& bytes)
{
    const QString file = Fuzzing::FileWith(u"fuzz.dproj"_s, bytes);
    const QString folder = Fuzzing::Folder().path();
    const TProjectImages images { file, folder,
        { { u"Icon_MainIcon"_s, u"icon.ico"_s }, { u"a"_s, u"a.png"_s } } };
    for (const TProjectImage& image : images.Images)
        Fuzzing::FileWith(image.FileName, {});
    static TBackups backups(Fuzzing::Folder().filePath(u"backups"_s), u"no database"_s);
    // Without a database the backup gets no record. This is far quicker, and the record is not tested here.
    const TBackupOrder order { backups, QDateTime({ 2024, 3, 5 }, { 12, 0, 0 }), TBackupPolicy::BestEffort };
    const auto read = [](const QString& path) { return ReadFile(path, u"read"_s); };
    try {
        const TUpdateResult result = UpdateProject(images, order);
        Fuzzing::Require(read(result.BackupPath) == bytes);
        QFile::remove(result.BackupPath);
        TProjectDocument document(bytes, file);
        for (const TProjectImage& image : images.Images)
            document.SetText(image.ID, image.FileName);
        const QByteArray updated = read(file);
        Fuzzing::Require(updated == document.Bytes() && result.IsWritten == (updated != bytes));
        const TUpdateResult again = UpdateProject(images, order);
        QFile::remove(again.BackupPath);
        Fuzzing::Require(
            !again.IsWritten && again.UpdatedCount == result.UpdatedCount && read(file) == updated);
    } catch (const TError&) {
        Fuzzing::Require(read(file) == bytes);
        RemoveTree(Fuzzing::Folder().filePath(u"backups"_s));
    }
}

} // namespace

// Project files: an edit changes only the texts of the edited elements. The same edit once more
// changes nothing.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = Fuzzing::BytesOf(data, size);
    try {
        TProjectDocument document(bytes, u"fuzz.dproj"_s);
        Fuzzing::Require(document.Bytes() == bytes);
        const bool isEdited = !Edit(document).empty();
        const QByteArray edited = document.Bytes();
        Fuzzing::Require(isEdited || edited == bytes);
        if (!bytes.contains('\0')) // the search is for UTF-8, and bytes with '\0' may be UTF-16
            RequireUntouchedElsewhere(bytes, edited);
        TProjectDocument again(edited, u"fuzz.dproj"_s);
        for (const TElementChange& change : Edit(again))
            Fuzzing::Require(!change.Differs && change.OldText == Marker);
        Fuzzing::Require(again.Bytes() == edited);
    } catch (const TError& error) {
        Fuzzing::Require(error.Text().contains(u"fuzz.dproj"_s));
    }
    RequireUpdate(bytes);
    return 0;
}

#include "cli/ProjectElements.h"

#include "base/Error.h"
#include "base/Files.h"
#include "cli/CliOutput.h"
#include "generate/Catalogue.h"

#include <QJsonObject>

namespace Corvadine {

TProjectImages ImagesOf(const TProject& project, const TGenJob& job)
{
    // This is checked here, because the error text of the update does not name the file.
    if (!FileExists(project.ProjectFile))
        throw TError(
            TErrorKind::Io, u"read the project file"_s, project.ProjectFile, u"the file does not exist"_s);
    TProjectImages images { project.ProjectFile, project.OutputFolder, {} };
    for (const TCatalogueEntry& entry : CatalogueOf(job.Platforms)) {
        const QString id = entry.ID.toString();
        images.Images.push_back({ id, ImageFileName(id) });
    }
    return images;
}

namespace {

// "line 83  iPad_AppIcon152  old.png -> new.png" for each element that changes.
QStringList ChangeLines(const TUpdateResult& update)
{
    const auto shown = [](const QString& text) { return text.isEmpty() ? u"(empty)"_s : text; };
    std::vector<QStringList> rows;
    for (const TElementChange& change : update.Changes)
        if (change.Differs)
            rows.push_back({ u"  line %1"_s.arg(change.Line), change.ID,
                shown(change.OldText) + u" -> "_s + change.NewText });
    return AlignedRows(rows);
}

} // namespace

QJsonArray ChangesJson(const TUpdateResult& update)
{
    QJsonArray changes;
    for (const TElementChange& change : update.Changes)
        if (change.Differs)
            changes.append(QJsonObject { { u"id"_s, change.ID }, { u"line"_s, change.Line },
                { u"old"_s, change.OldText }, { u"new"_s, change.NewText } });
    return changes;
}

int CountRight(const TUpdateResult& update)
{
    int count = 0;
    for (const TElementChange& change : update.Changes)
        count += change.Differs ? 0 : 1;
    return count;
}

QStringList DryRunLines(const TUpdateResult& update, const QString& projectFile)
{
    const QStringList changes = ChangeLines(update);
    QStringList lines { u"%1 would change in %2 (%3 right already)"_s
                            .arg(Counted(changes.size(), u"element"_s), projectFile)
                            .arg(CountRight(update)) };
    lines += changes;
    if (!update.MissingIDs.isEmpty())
        lines << u"Not found in the project file:"_s << Indented(update.MissingIDs);
    return lines;
}

} // namespace Corvadine

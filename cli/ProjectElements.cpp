#include "cli/ProjectElements.h"

#include "base/Error.h"
#include "base/Files.h"
#include "cli/CliOutput.h"
#include "generate/GenerationRun.h"

#include <QJsonObject>

namespace Corvadine {

TProjectImages ImagesOf(const TProject& project, const TGenJob& job)
{
    // The update says so too, but not which file it means.
    if (!FileExists(project.ProjectFile))
        throw TError(TErrorKind::NotFound, QStringLiteral("read the project file"), project.ProjectFile,
            QStringLiteral("the file does not exist"));
    TProjectImages images { project.ProjectFile, project.OutputFolder, {} };
    // The launch source decides about sizes only, so nothing is read for the names.
    for (const TGenRec& record : PlanGenList(job.Settings, std::nullopt))
        images.IDs.append(record.ID);
    return images;
}

QStringList ChangeLines(const TUpdateResult& update)
{
    const auto shown = [](const QString& text) { return text.isEmpty() ? QStringLiteral("(empty)") : text; };
    std::vector<QStringList> rows;
    for (const TElementChange& change : update.Changes)
        if (change.Differs)
            rows.push_back({ QStringLiteral("  line %1").arg(change.Line), change.ID,
                shown(change.OldText) + QStringLiteral(" -> ") + change.NewText });
    return AlignedRows(rows);
}

QJsonArray ChangesJson(const TUpdateResult& update)
{
    QJsonArray changes;
    for (const TElementChange& change : update.Changes)
        if (change.Differs)
            changes.append(
                QJsonObject { { QStringLiteral("id"), change.ID }, { QStringLiteral("line"), change.Line },
                    { QStringLiteral("old"), change.OldText }, { QStringLiteral("new"), change.NewText } });
    return changes;
}

int CountRight(const TUpdateResult& update)
{
    int count = 0;
    for (const TElementChange& change : update.Changes)
        count += change.Differs ? 0 : 1;
    return count;
}

QStringList MissingLines(const TUpdateResult& update)
{
    if (update.MissingIDs.isEmpty())
        return {};
    return QStringList { QStringLiteral("Not found in the project file:") } + Indented(update.MissingIDs);
}

QStringList Indented(const QStringList& texts)
{
    QStringList lines;
    for (const QString& text : texts)
        lines.append(QStringLiteral("  ") + text);
    return lines;
}

QString Counted(qsizetype count, const QString& noun)
{
    return QStringLiteral("%1 %2%3").arg(count).arg(noun, count == 1 ? QString() : QStringLiteral("s"));
}

} // namespace Corvadine

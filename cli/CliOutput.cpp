#include "cli/CliOutput.h"

#include <QJsonDocument>

#include <algorithm>

namespace Corvadine {

void TCliOutput::Show(const TCommandResult& result)
{
    for (const QString& warning : result.Warnings)
        FErr << "warning: " << OneLine(warning) << '\n';
    if (FForm == TOutputForm::Text)
        for (const QString& line : result.Lines)
            FOut << OneLine(line) << '\n';
    // Whoever reads both streams in one place sees the lines in the order in which they came.
    FOut.flush();
    if (!result.Error.isEmpty())
        FErr << OneLine(result.Error) << '\n';
    FErr.flush();
}

void TCliOutput::Finish(const TCommandResult& result)
{
    Show(result);
    if (FForm == TOutputForm::Json)
        FOut << QJsonDocument(JsonOf(result)).toJson().constData();
}

std::string OneLine(const QString& text)
{
    QString line;
    for (const QChar character : text) {
        if (character == u'\n')
            line += QLatin1String("\\n");
        else if (character == u'\r')
            line += QLatin1String("\\r");
        else if (character == u'\t')
            line += QLatin1String("\\t");
        else if (character.category() == QChar::Other_Control)
            line += QStringLiteral("\\x%1").arg(uint { character.unicode() }, 2, 16, QLatin1Char('0'));
        else
            line += character;
    }
    return line.toStdString();
}

QStringList AlignedRows(const std::vector<QStringList>& rows)
{
    std::vector<qsizetype> widths;
    for (const QStringList& row : rows) {
        widths.resize(static_cast<std::size_t>(row.size()));
        for (std::size_t column = 0; column < widths.size(); ++column)
            widths[column] = std::max(widths[column], row[static_cast<qsizetype>(column)].size());
    }
    QStringList lines;
    for (const QStringList& row : rows) {
        QString line;
        for (qsizetype column = 0; column + 1 < row.size(); ++column)
            line += row[column].leftJustified(widths[static_cast<std::size_t>(column)] + 2);
        lines.append(line + row.last());
    }
    return lines;
}

} // namespace Corvadine

#include "cli/CliOutput.h"

#include "base/Literals.h"

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
    // If both streams go to one terminal or file, this keeps their lines in order.
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
            line += "\\n"_L1;
        else if (character == u'\r')
            line += "\\r"_L1;
        else if (character == u'\t')
            line += "\\t"_L1;
        else if (character.category() == QChar::Other_Control)
            line += u"\\x%1"_s.arg(uint { character.unicode() }, 2, 16, QLatin1Char('0'));
        else
            line += character;
    }
    return line.toStdString();
}

QString Counted(qsizetype count, const QString& noun)
{
    return u"%1 %2%3"_s.arg(count).arg(noun, count == 1 ? QString() : u"s"_s);
}

QStringList Indented(const QStringList& texts)
{
    QStringList lines;
    for (const QString& text : texts)
        lines.append(u"  "_s + text);
    return lines;
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

#pragma once

#include "cli/CommandResult.h"

#include <QString>
#include <QStringList>

#include <ostream>
#include <vector>

namespace Corvadine {

enum class TOutputForm {
    Text,
    Json,
};

// Prints results to the program's two streams.
class TCliOutput {
public:
    TCliOutput(std::ostream& out, std::ostream& err, TOutputForm form) : FOut(out), FErr(err), FForm(form) { }

    // Prints the warnings and the error to the error stream. Prints the lines to the output stream unless the
    // output is JSON. A command on several projects calls this after each project.
    void Show(const TCommandResult& result);

    // Shows the last result, and prints the JSON document.
    void Finish(const TCommandResult& result);

private:
    std::ostream& FOut;
    std::ostream& FErr;
    TOutputForm FForm;
};

// Returns `text` in UTF-8, with its control characters written as escapes. A file name may contain line ends
// or control sequences. Without the escapes, such a name would start a new line or confuse the terminal.
std::string OneLine(const QString& text);

// Returns `count` and the noun, such as "1 image" or "2 images".
QString Counted(qsizetype count, const QString& noun);

// Returns `texts` indented, as lines below a heading.
QStringList Indented(const QStringList& texts);

// Returns one line for each row. The cells are padded to columns, with two spaces between them. The last
// column is not padded. REQUIRES: all rows have as many cells as the first.
QStringList AlignedRows(const std::vector<QStringList>& rows);

} // namespace Corvadine

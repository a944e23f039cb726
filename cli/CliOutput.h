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

// Puts results onto the program's two streams.
class TCliOutput {
public:
    TCliOutput(std::ostream& out, std::ostream& err, TOutputForm form) : FOut(out), FErr(err), FForm(form) { }

    // Prints warnings and error to the error stream and, as text, the lines. A command over several projects
    // calls this after each; the JSON document waits for Finish.
    void Show(const TCommandResult& result);

    // Show, and the one JSON document.
    void Finish(const TCommandResult& result);

private:
    std::ostream& FOut;
    std::ostream& FErr;
    TOutputForm FForm;
};

// `text` in UTF-8 with its control characters written as escapes: a file name that has a line end or a
// terminal's control sequence in it must not break the one-line rule or the terminal.
std::string OneLine(const QString& text);

// The rows with their cells padded to columns, two spaces between them; the last column is not padded.
// REQUIRES: all rows have as many cells as the first.
QStringList AlignedRows(const std::vector<QStringList>& rows);

} // namespace Corvadine

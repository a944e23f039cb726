#pragma once

#include "base/Error.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QString>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

// gtest finds printers by the type's namespace, which for QString is the global one.
inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << '"' << text.toStdString() << '"';
}

// What every test shares: a folder of its own, and texts that gtest can print.
// The test programs' main() (in TestingMain.cpp) makes the QCoreApplication.
namespace Corvadine::Testing {

// A test in an empty folder that is removed afterwards.
class TFolderTest : public ::testing::Test {
protected:
    // Absolute path of `name` in the test's folder, as the system spells it.
    QString Path(const QString& name) const { return QDir::toNativeSeparators(FFolder.filePath(name)); }

private:
    QTemporaryDir FFolder;
};

// Whether the whole text matches a regular expression, in which a full stop stands for a line break as well.
// GoogleTest's own matcher understands no more than a few signs on some systems.
MATCHER_P(Matches, pattern, "matches " + ::testing::PrintToString(pattern)) // NOLINT(*-naming)
{
    const QRegularExpression expression(QRegularExpression::anchoredPattern(QString::fromUtf8(pattern)),
        QRegularExpression::DotMatchesEverythingOption);
    return expression.match(QString::fromStdString(arg)).hasMatch();
}

// Writes a whole file, also into folders that are still missing, or reads one; fails the test when the system
// refuses.
void PutFile(const QString& path, const QByteArray& bytes);
QByteArray FileBytes(const QString& path);

// As if the file had been written at `time`.
void SetFileTime(const QString& path, const QDateTime& time);

// By their names below `folder`: each file with its content, each link with what it leads to, and each empty
// folder, whose name ends with a slash. Leaves out the files called as `except` says.
using TFolderContent = std::map<QString, QByteArray>;
TFolderContent FolderContent(const QString& folder, const QStringList& except = {});

// The text of the TError that `action` throws; fails the test when it throws none.
template <typename TAction> std::string ErrorOf(TAction action)
{
    try {
        action();
    } catch (const TError& error) {
        return error.what();
    }
    ADD_FAILURE() << "no TError was thrown";
    return {};
}

} // namespace Corvadine::Testing

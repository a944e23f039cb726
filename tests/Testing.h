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

// This function is in the global namespace, because gtest looks for printers in the namespace of the type.
inline void PrintTo(const QString& text, std::ostream* stream)
{
    *stream << '"' << text.toStdString() << '"';
}

// What all tests share. The main() of the test programs (TestingMain.cpp) makes the QCoreApplication.
namespace Corvadine::Testing {

// A test in an empty folder that is removed afterwards.
class TFolderTest : public ::testing::Test {
protected:
    // Returns the absolute path of `name` in the test's folder, with the system's own delimiters.
    QString Path(const QString& name) const { return QDir::toNativeSeparators(FFolder.filePath(name)); }

private:
    QTemporaryDir FFolder;
};

// Matches if the whole text matches a regular expression. A full stop also matches a line break. GoogleTest's
// own matcher knows only a small part of the syntax on some systems.
MATCHER_P(Matches, pattern, "matches " + ::testing::PrintToString(pattern)) // NOLINT(*-naming)
{
    const QRegularExpression expression(QRegularExpression::anchoredPattern(QString::fromUtf8(pattern)),
        QRegularExpression::DotMatchesEverythingOption);
    return expression.match(QString::fromStdString(arg)).hasMatch();
}

// PutFile() writes a whole file, and makes missing folders. FileBytes() returns the content of a file. Both
// fail the test if the system refuses.
void PutFile(const QString& path, const QByteArray& bytes);
QByteArray FileBytes(const QString& path);

// Sets the time at which the file was last changed.
void SetFileTime(const QString& path, const QDateTime& time);

// Returns the entries in `folder` and below. The keys are the names relative to `folder`. The value of a file
// is its content, and the value of a link names its target. Empty folders are listed with a slash at the end
// of the name. Files whose name is in `except` are left out.
using TFolderContent = std::map<QString, QByteArray>;
TFolderContent FolderContent(const QString& folder, const QStringList& except = {});

// Returns the text of the TError that `action` throws. Fails the test if `action` throws no TError.
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

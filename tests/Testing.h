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

// What all tests share. The main() of the test programs (TestingMain.cpp) makes the QCoreApplication.
namespace Corvadine::Testing {

// A test in an empty folder that is removed afterwards.
class TFolderTest : public ::testing::Test {
protected:
    // Absolute path of `name` in the test's folder, as the system spells it.
    QString Path(const QString& name) const { return QDir::toNativeSeparators(FFolder.filePath(name)); }

private:
    QTemporaryDir FFolder;
};

// Whether the whole text matches a regular expression; a full stop also matches a line break. GoogleTest's
// own matcher knows only a small part of the syntax on some systems.
MATCHER_P(Matches, pattern, "matches " + ::testing::PrintToString(pattern)) // NOLINT(*-naming)
{
    const QRegularExpression expression(QRegularExpression::anchoredPattern(QString::fromUtf8(pattern)),
        QRegularExpression::DotMatchesEverythingOption);
    return expression.match(QString::fromStdString(arg)).hasMatch();
}

// Writes a whole file, with missing folders, or reads one. Fails the test if the system refuses.
void PutFile(const QString& path, const QByteArray& bytes);
QByteArray FileBytes(const QString& path);

// Sets the time at which the file was last changed.
void SetFileTime(const QString& path, const QDateTime& time);

// What is in `folder` and below, by its name relative to `folder`: files with their content, links with their
// target, and empty folders, whose names end with a slash. Leaves out files with a name in `except`.
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

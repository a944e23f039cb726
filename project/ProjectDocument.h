#pragma once

#include "base/Error.h"
#include "project/TextForm.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace Corvadine {

// One element of a project file and the text it gets.
struct TElementChange {
    QString ID;      // the element's name
    int Line = 0;    // where it stands, from 1
    QString OldText; // its text, elements inside it left out
    QString NewText;
    bool Differs = false; // false: it already has this text, and its bytes stay as they are
};

// The content of one project file (MSBuild XML), and edits of the properties in it: the elements directly
// inside a PropertyGroup that is itself directly inside the document element. Nothing but the text of an
// edited element changes: byte order mark, line ends, quotes, comments, white space and attributes elsewhere
// stay byte for byte.
class TProjectDocument {
public:
    // `file` names the document in messages only. Throws TError(BadInput) unless `bytes` are one well-formed
    // XML document; entity declarations are refused too.
    TProjectDocument(const QByteArray& bytes, const QString& file);

    // The text of the first property ProjectGuid; empty if there is none.
    QString ProjectGuid() const;

    // Gives every property named exactly `id` this text, in place of all its content, and lists them in
    // document order. Throws TError(BadInput), before it changes anything, if XML cannot hold a character of
    // `text`.
    std::vector<TElementChange> SetText(const QString& id, const QString& text);

    // The whole file with the texts set so far.
    QByteArray Bytes() const;

private:
    struct TElement {
        QString Name;
        QString Text;
        qsizetype Line;
        qsizetype Begin; // the bytes of FText.Utf8 that a new text replaces
        qsizetype End;
        qsizetype InnerCount; // of elements inside it
        bool IsEmptyTag;      // <X/>: the replaced bytes are its end
        bool IsCertain;       // whether Text is what every reader of the file would see
        std::optional<QString> NewText;
    };

    void IndexElements();
    QByteArray Replacement(const TElement& element) const;
    bool IsResultOf(const TProjectDocument& edited) const;
    TError Refusal(const QString& attempt, const QString& reason) const;

    QString FFile;
    TDecodedText FText;
    qsizetype FElementCount;         // in the whole document
    std::vector<TElement> FElements; // the properties
};

} // namespace Corvadine

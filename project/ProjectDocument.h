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
    int Line = 0;    // line of the element's start tag, from 1
    QString OldText; // the element's text, without the text of elements inside it
    QString NewText;
    bool Differs = false; // false: the element has NewText already, and its bytes stay as they are
};

// The content of one project file (MSBuild XML), and edits of its properties. A property is an element
// directly inside a PropertyGroup that is itself directly inside the document element. Only the content
// of edited properties changes. Everything else stays byte for byte: byte order mark, line ends, quotes,
// comments, white space and attributes.
class TProjectDocument {
public:
    // `file` is the name of the document, used in messages only. Throws TError(BadInput) unless `bytes` are
    // one well-formed XML document without entity declarations.
    TProjectDocument(const QByteArray& bytes, const QString& file);

    // Returns the text of the first property ProjectGuid, or an empty text if there is none.
    QString ProjectGuid() const;

    // Replaces the whole content of every property named exactly `id` by `text`. Returns these properties in
    // document order. Throws TError(BadInput), and changes nothing, if XML cannot hold a character of `text`.
    std::vector<TElementChange> SetText(const QString& id, const QString& text);

    // Returns the whole file with the texts set so far. Throws TError(BadInput) if the edited file does not
    // read back correctly.
    QByteArray Bytes() const;

private:
    struct TElement {
        QString Name;
        QString Text;
        qsizetype Begin;         // index in FText.Text of the first character that a new text replaces
        qsizetype End;           // index after the last of these characters
        int InnerCount = 0;      // number of elements inside this element
        bool IsEmptyTag = false; // whether the element is <X/>; a new text replaces the end of the tag
        std::optional<QString> NewText {};
    };

    void ReadElements();
    void CloseElement(TElement& element, qsizetype tagEnd) const;
    bool IsCertain(const TElement& element) const;
    int LineOf(const TElement& element) const;
    QString Replacement(const TElement& element) const;
    bool IsResultOf(const TProjectDocument& edited) const;
    TError Refusal(const QString& attempt, const QString& reason) const;

    QString FFile;
    TDecodedText FText;
    int FElementCount = 0;           // number of elements in the whole document
    std::vector<TElement> FElements; // the properties, in document order
};

} // namespace Corvadine

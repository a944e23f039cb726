#include "project/ProjectDocument.h"

#include "tests/Testing.h"

#include <QStringEncoder>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

QByteArray Edited(const QByteArray& bytes, const QString& text = u"new"_s)
{
    TProjectDocument document(bytes, "P");
    document.SetText("Icon", text);
    return document.Bytes();
}

QByteArray Project(const QByteArray& properties)
{
    return "<Project><PropertyGroup>" + properties + "</PropertyGroup></Project>";
}

// A project file with everything that could confuse an edit. Each @ marks a text to replace.
const QByteArray Awkward = R"(<?xml version='1.0' encoding="UTF-8" ?>
<!-- <PropertyGroup><Icon>no</Icon></PropertyGroup> -->
<Project  xmlns='urn:x'
	A = "1>2" ><Icon>no</Icon>
    <PropertyGroup Condition="'$(A)'>'/' or '$(B)'!=''"><?pi <Icon> ?>
        <p:Other.x-y q:r=""/><Icon a='>"/' b=">">@</Icon
        ><icon>no</icon><Icon2 />
        <Deeper><Icon>no</Icon></Deeper>
        <![CDATA[<Icon>no</Icon>]]>
    </PropertyGroup >
    <ItemGroup><Icon>no</Icon><PropertyGroup><Icon/></PropertyGroup></ItemGroup>
    <PropertyGroup><X>&#x41;&amp;&quot;</X><Icon>@</Icon></PropertyGroup>
	<propertygroup><Icon/></propertygroup><PropertyGroup/>
</Project>
<!-- Größe, 😀 -->

)";

QByteArray AwkwardWith(const QByteArray& text)
{
    return QByteArray(Awkward).replace("\n", "\r\n").replace("@", text);
}

} // namespace

TEST(ProjectDocumentTest, ChangesNothingButTheTextsInEveryEncoding)
{
    const QString oldText = AwkwardWith("$(BDS)\\bin\\x.ico");
    const QString newText = AwkwardWith("Bür😀\\&lt;&amp;&gt;");
    for (const auto encoding :
        { QStringConverter::Utf8, QStringConverter::Utf16LE, QStringConverter::Utf16BE })
        for (const int markCount : { 0, 1, 2 }) {
            const QString marks(markCount, QChar::ByteOrderMark);
            const QByteArray before = QStringEncoder(encoding).encode(marks + oldText);
            const QByteArray after = QStringEncoder(encoding).encode(marks + newText);
            EXPECT_EQ(Edited(before, "Bür😀\\<&>"), after) << QStringConverter::nameForEncoding(encoding);
            EXPECT_EQ(Edited(after, "Bür😀\\<&>"), after) << "second run";
        }

    TProjectDocument document(AwkwardWith("old"), "P");
    const auto changes = document.SetText("Icon", "new");
    ASSERT_EQ(changes.size(), 2U) << "one of each group";
    EXPECT_EQ(changes[0].Line, 6);
    EXPECT_EQ(changes[1].Line, 12);
    EXPECT_EQ(changes[1].OldText, "old");
}

TEST(ProjectDocumentTest, ReplacesContentOfEveryShape)
{
    const std::pair<const char*, const char*> cases[] = {
        { "<Icon/>", "<Icon>new</Icon>" },
        { "<Icon a='/' \t/>", "<Icon a='/'>new</Icon>" },
        { "<Icon></Icon >", "<Icon>new</Icon >" },
        { "<Icon> new </Icon>", "<Icon>new</Icon>" },
        { "<Icon><!--</Icon>--><?p </Icon>?>a<![CDATA[</Icon>]]></Icon>", "<Icon>new</Icon>" },
        { "<Icon>new<Icon a='>'><b/></Icon></Icon>", "<Icon>new</Icon>" },
        // The same text in another spelling is no change.
        { "<Icon>n<!-- -->&#101;<![CDATA[w]]></Icon>", "<Icon>n<!-- -->&#101;<![CDATA[w]]></Icon>" },
    };
    for (const auto& [before, after] : cases)
        EXPECT_EQ(Edited(Project(before)), Project(after)) << before;

    const QByteArray docType = "<!DOCTYPE Project SYSTEM 'p.dtd'>"; // may declare entities
    EXPECT_EQ(Edited(docType + Project("<Icon>new&b;</Icon>")), docType + Project("<Icon>new</Icon>"));
}

TEST(ProjectDocumentTest, EscapesWhatXmlCannotHoldPlainly)
{
    EXPECT_EQ(Edited(Project("<Icon/>"), "a&b<c>\"'\t\r\nü"),
        Project("<Icon>a&amp;b&lt;c&gt;\"'&#9;&#13;&#10;ü</Icon>"));
    for (const char16_t forbidden : { u'\1', u'\xD800', u'\xFFFF' })
        EXPECT_EQ(ErrorOf([&] { Edited(Project(""), QString(QChar(forbidden))); }),
            "Cannot edit the project file P: the text for Icon has a character that XML cannot hold");
}

TEST(ProjectDocumentTest, AddsOnlyAsciiWhereTheEncodingIsNotUnicode)
{
    const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"windows-1252\"?>";
    const QByteArray after = Project("<!--\xFC\x80--><Icon>B&#252;r&#128512;</Icon>");
    for (const QByteArray& head : { QByteArray(), declaration, QByteArray("\xEF\xBB\xBF") })
        for (const QByteArray& before : { Project("<!--\xFC\x80--><Icon/>"), after })
            EXPECT_EQ(Edited(head + before, "Bür😀"), head + after);
    // The document does not decode this encoding, so it does not take these bytes for the letter "ü".
    for (const char* before : { "<Icon>\xFC</Icon>", "<Icon>\xC3\xBC</Icon>" })
        EXPECT_EQ(Edited(declaration + Project(before), "ü"), declaration + Project("<Icon>&#252;</Icon>"));
}

TEST(ProjectDocumentTest, RefusesDamagedFilesAndSaysWhere)
{
    const std::string notWellFormed = "it is not well-formed XML, line ";
    const std::pair<QByteArray, std::string> cases[] = {
        { "", "it is empty" },
        { "<Project>\n</Projekt>", notWellFormed + "2: Opening and ending tag mismatch" },
        { QByteArray("<Project/>\0<Project/>", 21), notWellFormed + "1: Extra content at end of document" },
        { Project("\n<!DOCTYPE X>"), notWellFormed + "2: Error parsing document type declaration" },
        { Project("<A~B/>"), notWellFormed + "1: Error parsing start element tag" },
        { Project("<A\nB~C=''/>"), notWellFormed + "2: Error parsing element attribute" },
        { "<!DOCTYPE Project [<!ENTITY a \"b\">]><Project>&a;</Project>", "its DOCTYPE declares entities" },
        { Project("<Icon/>") + "\xE9",
            notWellFormed + "1: Extra content" }, // a decoder of UTF-8 would drop the cut character
        { QByteArray("\xFF\xFE<\0P\0r", 7), "its UTF-16 text is cut off" },
        { QByteArray("\xFE\xFF\0<\xD8\0\0>", 8), "it is not valid UTF-16" },
    };
    for (const auto& [bytes, reason] : cases)
        EXPECT_THAT(ErrorOf([&file = bytes] { TProjectDocument(file, "P"); }),
            ::testing::StartsWith("Cannot read the project file P: " + reason));
}

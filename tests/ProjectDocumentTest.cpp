#include "project/ProjectDocument.h"

#include "tests/Testing.h"

#include <QStringEncoder>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

const QString Icon = QStringLiteral("Icon_MainIcon");

QByteArray Edited(const QByteArray& bytes, const QString& text = QStringLiteral("new"))
{
    TProjectDocument document(bytes, "P");
    document.SetText(Icon, text);
    return document.Bytes();
}

QByteArray Project(const QByteArray& properties)
{
    return "<Project><PropertyGroup>" + properties + "</PropertyGroup></Project>";
}

// Everything that an edit could stumble over; @ stands where the texts to replace are.
const QByteArray Awkward = R"(<?xml version='1.0' encoding="utf-8" ?>
<!-- <PropertyGroup><Icon_MainIcon>no</Icon_MainIcon></PropertyGroup> -->
<Project  xmlns='urn:x'
	A = "1>2" ><Icon_MainIcon>no</Icon_MainIcon>
    <PropertyGroup Condition="'$(A)'>'/' or '$(B)'!=''"><?pi <Icon_MainIcon> ?>
        <Other/><Icon_MainIcon a='>"/' b=">">@</Icon_MainIcon
        ><icon_mainicon>no</icon_mainicon><Icon_MainIcon2 />
        <Deeper><Icon_MainIcon>no</Icon_MainIcon></Deeper>
        <![CDATA[<Icon_MainIcon>no</Icon_MainIcon>]]>
    </PropertyGroup >
    <ItemGroup><Icon_MainIcon>no</Icon_MainIcon><PropertyGroup><Icon_MainIcon/></PropertyGroup></ItemGroup>
    <PropertyGroup><X>&#x41;&amp;&quot;</X><Icon_MainIcon>@</Icon_MainIcon></PropertyGroup>
	<propertygroup><Icon_MainIcon/></propertygroup><PropertyGroup/>
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
        for (const auto mark : { QStringConverter::Flag::Default, QStringConverter::Flag::WriteBom }) {
            const QByteArray before = QStringEncoder(encoding, mark).encode(oldText);
            const QByteArray after = QStringEncoder(encoding, mark).encode(newText);
            EXPECT_EQ(Edited(before, "Bür😀\\<&>"), after) << QStringConverter::nameForEncoding(encoding);
            EXPECT_EQ(Edited(after, "Bür😀\\<&>"), after) << "second run";
        }

    TProjectDocument document(AwkwardWith("old"), "P");
    const auto changes = document.SetText(Icon, "new");
    ASSERT_EQ(changes.size(), 2U) << "one of each group";
    EXPECT_EQ(changes[0].Line, 6);
    EXPECT_EQ(changes[1].Line, 12);
    EXPECT_EQ(changes[1].OldText, "old");
}

TEST(ProjectDocumentTest, ReplacesContentOfEveryShape)
{
    const std::pair<const char*, const char*> cases[] = {
        { "<Icon_MainIcon/>", "<Icon_MainIcon>new</Icon_MainIcon>" },
        { "<Icon_MainIcon a='/' \t/>", "<Icon_MainIcon a='/'>new</Icon_MainIcon>" },
        { "<Icon_MainIcon></Icon_MainIcon >", "<Icon_MainIcon>new</Icon_MainIcon >" },
        { "<Icon_MainIcon> new </Icon_MainIcon>", "<Icon_MainIcon>new</Icon_MainIcon>" },
        { "<Icon_MainIcon><!--</Icon_MainIcon>--><?p "
          "</Icon_MainIcon>?>a<![CDATA[</Icon_MainIcon>]]></Icon_MainIcon>",
            "<Icon_MainIcon>new</Icon_MainIcon>" },
        { "<Icon_MainIcon>new<Icon_MainIcon a='>'><b/></Icon_MainIcon></Icon_MainIcon>",
            "<Icon_MainIcon>new</Icon_MainIcon>" },
        // The same text in another spelling is no change.
        { "<Icon_MainIcon>n<!-- -->&#101;<![CDATA[w]]></Icon_MainIcon>",
            "<Icon_MainIcon>n<!-- -->&#101;<![CDATA[w]]></Icon_MainIcon>" },
    };
    for (const auto& [before, after] : cases)
        EXPECT_EQ(Edited(Project(before)), Project(after)) << before;
}

TEST(ProjectDocumentTest, EscapesWhatXmlCannotHoldPlainly)
{
    EXPECT_EQ(Edited(Project("<Icon_MainIcon/>"), "a&b<c>\"'\t\r\nü"),
        Project("<Icon_MainIcon>a&amp;b&lt;c&gt;\"'&#9;&#13;&#10;ü</Icon_MainIcon>"));
    for (const char16_t forbidden : { u'\1', u'\xD800', u'\xFFFF' })
        EXPECT_EQ(ErrorOf([&] { Edited(Project(""), QString(QChar(forbidden))); }),
            "Cannot edit the project file P: the text for Icon_MainIcon has a character that XML cannot "
            "hold");
}

TEST(ProjectDocumentTest, AddsOnlyAsciiWhereTheEncodingIsNotUnicode)
{
    const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"windows-1252\"?>";
    const QByteArray comment = "<!--\xFC\x80-->";
    const QByteArray undeclared = Project(comment + "<Icon_MainIcon/>");
    const QByteArray element = "<Icon_MainIcon>B&#252;r&#128512;</Icon_MainIcon>";
    for (const QByteArray& head : { QByteArray(), declaration, QByteArray("\xEF\xBB\xBF") }) {
        EXPECT_EQ(Edited(head + undeclared, "Bür😀"), head + Project(comment + element));
        EXPECT_EQ(Edited(head + Project(comment + element), "Bür😀"), head + Project(comment + element));
    }
    // The byte may mean a letter other than the one it looks like.
    EXPECT_EQ(Edited(declaration + Project("<Icon_MainIcon>\xFC</Icon_MainIcon>"), "ü"),
        declaration + Project("<Icon_MainIcon>&#252;</Icon_MainIcon>"));
}

TEST(ProjectDocumentTest, RefusesDamagedFilesAndSaysWhere)
{
    const std::string notWellFormed = "it is not well-formed XML, line ";
    const std::pair<QByteArray, std::string> cases[] = {
        { "", "it is empty" },
        { "\r\n \r\n", notWellFormed + "3: Premature end of document" },
        { QByteArray("\x89PNG\r\n\x1A\n\0\0\0\rIHDR", 16), notWellFormed + "1: Start tag expected" },
        { "<Project>\n</Projekt>", notWellFormed + "2: Opening and ending tag mismatch" },
        { "<Project/>\n<Project/>", notWellFormed + "2: Extra content at end of document" },
        { QByteArray("<Project/>\0<Project/>", 21), notWellFormed + "1: Extra content at end of document" },
        { Project("<X>A & B</X>"), "it is not well-formed XML, line 1: " },
        { Project("\n<!DOCTYPE X>"), notWellFormed + "2: " },
        { "<!DOCTYPE Project [<!ENTITY a \"b\">]><Project>&a;</Project>", "its DOCTYPE declares entities" },
        { QByteArray("\xFF\xFE<\0P\0r", 7), "its UTF-16 text is cut off" },
        { QByteArray("\xFE\xFF\0<\xD8\0\0>", 8), "it is not valid UTF-16" },
    };
    for (const auto& [bytes, reason] : cases) {
        const std::string text = ErrorOf([&file = bytes] { TProjectDocument(file, "/a/P.dproj"); });
        EXPECT_THAT(text, ::testing::StartsWith("Cannot read the project file /a/P.dproj: " + reason))
            << bytes.toStdString();
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
    }
}

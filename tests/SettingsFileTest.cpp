#include "app/SettingsFile.h"

#include "tests/WidgetTesting.h"

using namespace Corvadine;
using namespace Corvadine::Testing;

TEST(SettingsFileTest, ReadsWhatOtherProgramsWriteAndKeepsValuesRaw)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.ini");
    const QString text =
        u"; note\r\n[corvadine]\r\nBaseImage=C:\\new\\\"Größe €\"\r\nIncIPad=0\r\nrubbish\r\n"_s;
    const QByteArray utf16 =
        QByteArray("\xFF\xFE") + QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    const QByteArray western = QString(text).replace(u'€', u'\x80').toLatin1();
    for (const QByteArray& bytes : { text.toUtf8(), "\xEF\xBB\xBF" + text.toUtf8(), utf16, western }) {
        PutFile(path, bytes);
        const TSettingsFile settings(path);
        EXPECT_TRUE(settings.HasSection());
        EXPECT_EQ(settings.Text("BaseImage"), u"C:\\new\\\"Größe €\""_s) << bytes.toHex().constData();
        EXPECT_FALSE(settings.Boolean("IncIPad", true));
        EXPECT_EQ(settings.Integer("rubbish", 7), 7);
    }
    TSettingsFile settings(path);
    PutFile(path, "[Corvadine]\nBaseImage=C:\\Caf\xE9\n");
    EXPECT_EQ(TSettingsFile(path).Text("BaseImage"), u"C:\\Café"_s) << "looks like a cut character of UTF-8";
    settings.SetInteger("WindowsState", 2);
    settings.Save();
    EXPECT_EQ(TSettingsFile(path).Text("BaseImage"), u"C:\\new\\\"Größe €\""_s);
    EXPECT_EQ(TSettingsFile(path).Integer("WindowsState", 0), 2);
}

TEST(SettingsFileTest, SavingChangesOnlyTheValuesThatAreSet)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("a.ini");
    const auto saved = [&](const QByteArray& before, const QString& project) {
        PutFile(path, before);
        TSettingsFile settings(path);
        settings.SetText("ProjectFile", project);
        settings.SetInteger("ScreenLeft", -7);
        settings.Save();
        EXPECT_EQ(TSettingsFile(path).Integer("ScreenLeft", 0), -7);
        return FileBytes(path);
    };
    const QByteArray start = QByteArray("\xEF\xBB\xBF\0\xFF garbage\r\n", 15) + "[open\r\nProjectFile=x\r\n"
        + "[CORVADINE] ; ours\r\n\r\n nonsense\r\n; ProjectFile=no\r\nprojectfile = ";
    const QByteArray end = " \r\nProjectFile=second\r\n";
    const QByteArray others = "\r\n\r\n[Other]\nkey=\xE9";
    EXPECT_EQ(saved(start + "C:\\Gr\xF6\xDF.dproj" + end + others, "new"),
        start + "new" + end + "ScreenLeft=-7\r\n" + others);
    EXPECT_EQ(saved("", "a"), "[Corvadine]\nProjectFile=a\nScreenLeft=-7\n");
    EXPECT_EQ(saved("x", "a"), "x\n[Corvadine]\nProjectFile=a\nScreenLeft=-7\n");

    for (const char* unfit : { "/a\n[Corvadine]\nScreenLeft=5.dproj", "/a\rb", "/a " })
        EXPECT_EQ(saved("[Corvadine]\nProjectFile=a\n", unfit), "[Corvadine]\nProjectFile=\nScreenLeft=-7\n");
}

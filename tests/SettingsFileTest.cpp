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
    settings.SetInteger("WindowsState", 2);
    settings.Save();
    EXPECT_EQ(TSettingsFile(path).Text("BaseImage"), u"C:\\new\\\"Größe €\""_s);
    EXPECT_EQ(TSettingsFile(path).Integer("WindowsState", 0), 2);
}

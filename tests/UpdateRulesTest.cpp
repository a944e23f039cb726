#include "support/update/rules/IniText.h"
#include "support/update/rules/UpdateNames.h"
#include "support/update/rules/UpdateSettings.h"
#include "tests/Testing.h"

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

class UpdateRulesTest : public TFolderTest { };

TEST(UpdateNamesTest, OnlyNamesInsideTheProgramFolderAreAccepted)
{
    for (const char* name :
        { "corvadine", "Corvadine.chm", "platforms/qwindows.dll", "a b/c d.txt", ".config", "Corvadine.CAB",
            "com10.txt", "console", "sub/Corvadine.db", "lpt", "a..b", "nul-free" })
        EXPECT_EQ(CheckedTarget(QString::fromLatin1(name)), QString::fromLatin1(name)) << name;

    for (const char* name : { "", ".", "..", "../a", "a/../b", "a/..", "./a", "/a", "//server/share", "a//b",
             "a/", "\\a", "..\\a", "\\\\server\\share\\a", "\\\\?\\C:\\a", "C:\\a", "C:a", "C:", "a:stream",
             "a::$DATA", "con", "CON", "nul", "Nul.txt", "aux.tar.gz", "prn", "COM1", "com9.txt", "lpt1",
             "sub/lpt5.x", "CONIN$", "nul .txt", "con /a", "a.", "a. /b", "a ", " a", "a /b", "a*", "a?",
             "a<b", "a>b", "a|b", "a\"b", "a\tb", "a\nb", "a\x7f", "PROJEC~1/a", "caf\xe9", "Corvadine.db",
             "corvadine.DB-wal", "CORVADINE.INI", "CorvadineBase.ini", "Project Backups/a", "project backups",
             "WUPDATE.LOG", "CorvadineUpdate.ini", "corvadineupdate.accepted",
             "CorvadineUpdate.staging/files/a", "a/b/c/d/e/f/g/h/i" })
        EXPECT_THAT(ErrorOf([&] { CheckedTarget(QString::fromLatin1(name)); }), HasSubstr("Cannot accept"))
            << name;
    EXPECT_THAT(ErrorOf([] { CheckedTarget(QString(201, u'a')); }), HasSubstr("too long"));
    EXPECT_THAT(ErrorOf([] { CheckedTarget("a\u202Efdp.exe"); }), HasSubstr("\"a?fdp.exe\""));
    EXPECT_THAT(ErrorOf([] { CheckedTarget(QString(QChar(u'\0')) + u'a'); }), HasSubstr("not allowed"));
}

TEST(IniTextTest, IsReadStrictly)
{
    const TIniText text(
        "\xef\xbb\xbf; remark\r\n[Update]\r\n Key = a=b \r\nempty=\n\n[other]\nkey=\xc3\xbc", "x");
    EXPECT_EQ(text.Value("update", "key"), "a=b");
    EXPECT_EQ(text.Value("update", "empty"), QString());
    EXPECT_EQ(text.Value("other", "key"), "ü");
    EXPECT_FALSE(text.Value("other", "empty") || text.Value("third", "key"));

    for (const QByteArray& bytes :
        { QByteArray("key=1"), QByteArray("[a]\nkey"), QByteArray("[a]\n=1"), QByteArray("[a]\nkey=1\nKEY=2"),
            QByteArray("[a]\n[A]"), QByteArray("[a]\nkey=\x01"), QByteArray("[a]\nkey=\xff"),
            QByteArray("[a]\nkey=\xc3"), QByteArray("[a]\nkey=1\rkey=2"), QByteArray("[a]\nk\0=1", 8),
            QByteArray("[a"), "[a]\nkey=" + QByteArray(5000, 'x'), QByteArray(30'000, '\n') })
        EXPECT_THAT(ErrorOf([&] { TIniText(bytes, "the list"); }), HasSubstr("Cannot read the list"));
}

TEST_F(UpdateRulesTest, TheNewestVersionEverAcceptedIsRemembered)
{
    for (const char* text :
        { "", "1", "1.", "1..2", "1.2.3.4.5", "1.2-beta", "-1.2", "123456.1", " 1.2", "1.2\n" })
        EXPECT_FALSE(ParseVersion(QString::fromLatin1(text))) << text;
    EXPECT_EQ(ParseVersion("1.2"), ParseVersion("01.2.0.0"));
    EXPECT_LT(ParseVersion("1.9.9"), ParseVersion("1.10"));

    const TUpdateFolder folder(Path({}));
    TUpdateSettings settings(folder);
    settings.InstalledVersion = { 1, 2 };
    const auto newest = [&] { return VersionText(NewestAcceptedVersion(settings)).toStdString(); };
    EXPECT_EQ(newest(), "1.2.0");
    folder.RecordAcceptedVersion("1.4.1");
    folder.RecordAcceptedVersion("1.3");
    EXPECT_EQ(newest(), "1.4.1");
    PutFile(Path("CorvadineUpdate.accepted"), "0.1\n");
    EXPECT_EQ(newest(), "1.2.0") << "what is installed still counts";
    PutFile(Path("CorvadineUpdate.accepted"), QByteArray(100'000, '\0'));
    EXPECT_EQ(newest(), "1.2.0");
    folder.RecordAcceptedVersion("1.3");
    EXPECT_EQ(newest(), "1.3.0");

    EXPECT_EQ(folder.KnownRelease(), TKnownRelease {});
    const TKnownRelease withdrawn { { 1, 3 }, true };
    folder.RecordKnownRelease(withdrawn);
    folder.RecordKnownRelease({ { 1, 3 }, false });
    EXPECT_EQ(folder.KnownRelease(), withdrawn);
    folder.RecordKnownRelease({ { 1, 4 }, false });
    EXPECT_EQ(FileBytes(Path("CorvadineUpdate.known")), "1.4.0\n");
}

TEST_F(UpdateRulesTest, AnAdministratorCanPointTheCheckElsewhere)
{
    const TUpdateFolder folder(Path({}));
    const QString file = Path("CorvadineUpdate.ini");
    const QByteArray key(32, 'k');
    const TUpdateSettings built = LoadUpdateSettings(folder);
    EXPECT_EQ(built.Url.scheme(), u"https");
    EXPECT_GT(built.InstalledVersion, TVersion {});

    PutFile(file, "[update]\nurl=https://mirror.example/c/Corvadine.INF\nkey=" + key.toBase64() + "\n");
    EXPECT_EQ(LoadUpdateSettings(folder).Url.host(), u"mirror.example");
    EXPECT_EQ(LoadUpdateSettings(folder).PublicKey, key);
    PutFile(file, "[other]\n");
    EXPECT_EQ(LoadUpdateSettings(folder).Url, built.Url);
    for (const QByteArray& line : { QByteArray("url=http://mirror.example/"), QByteArray("url="),
             QByteArray("url=https:///a"), QByteArray("key=abc"), QByteArray("key=") }) {
        PutFile(file, "[update]\n" + line);
        EXPECT_THAT(ErrorOf([&] { LoadUpdateSettings(folder); }), HasSubstr("CorvadineUpdate.ini: its "))
            << line.constData();
    }
}

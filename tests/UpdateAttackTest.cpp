#include "tests/TestingSystem.h"
#include "tests/UpdateTesting.h"

#include <QCryptographicHash>
#include <QFileInfo>

// What attackers and accidents can do to an update. Each row is one attack or accident. Each must end in a
// sentence for the user, and must leave the program folder as it was.

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

namespace {

void FlipByte(QByteArray& bytes)
{
    bytes[bytes.size() / 2] = static_cast<char>(bytes[bytes.size() / 2] ^ 1);
}

// What an attacker or an accident may change before the user asks for updates.
struct TScene {
    TUpdateRelease Release;          // the release that is put on the server
    QHash<QString, TAnswer> Instead; // answers in place of the release's files
    TUpdateSettings Settings;
    quint64 LargestFile = std::numeric_limits<quint64>::max();
};

using TPrepare = std::function<void(TScene&)>;

struct TAttack {
    const char* Name;
    std::string Text; // part of the error text for the user
    TPrepare Prepare;
    const char* Certificate = "localhost";
};

// Replaces `from` in the control file and signs the control file, as the publisher might do by mistake.
TPrepare Signed(const QByteArray& from, const QByteArray& to)
{
    return [=](TScene& scene) { scene.Release.Replace(from, to); };
}

// Puts a further file called `name` at the start of a complete package. make-update refuses bad names. So the
// archive is first made with a harmless name of the same length. Then `name` replaces the harmless name.
TPrepare Packed(const QByteArray& name, const QByteArray& content = "evil")
{
    return [=](TScene& scene) {
        const QByteArray harmless(name.size(), 'A');
        TUpdateRelease other({ { harmless, content }, { "corvadine", NewProgram() },
                                 { "Corvadine.chm", NewHelp }, { "presets/colors.txt", NewPresets } },
            { "--archive", "zip" });
        scene.Release.ReplacePackage(other.Files["Corvadine.ZIP"].replace(harmless, name));
    };
}

TPrepare Put(const QString& name, const QByteArray& bytes)
{
    return [=](TScene& scene) { PutFile(scene.Settings.Folder.PathOf(name), bytes); };
}

TPrepare Linked(const QString& name, const QString& target)
{
    return [=](TScene& scene) {
        QFile::rename(scene.Settings.Folder.PathOf(name), scene.Settings.Folder.PathOf("moved"));
        QFile::link(target, scene.Settings.Folder.PathOf(name));
    };
}

const QByteArray Redirect = "HTTP/1.1 302 Found\r\nLocation: ";

const QString ControlPath = TUpdateSettings::ControlFilePath;

TPrepare Answer(const QString& path, const TAnswer& answer)
{
    return [=](TScene& scene) { scene.Instead[path] = answer; };
}

constexpr std::chrono::milliseconds ShortTime { 700 };

TPrepare Impatient(const TPrepare& prepare)
{
    return [=](TScene& scene) {
        prepare(scene);
        scene.Settings.Limits.Headers = scene.Settings.Limits.Stall = ShortTime;
    };
}

const std::string NotSigned = "is not signed by Corvadine's publisher";
const std::string BadName = "Cannot accept the file name";

std::vector<TAttack> Attacks()
{
    const TAnswer endless { OkHeaders, TThen::SendForEver };
    return {
        // Attacks on the control file.
        { "a byte of the control file", NotSigned, [](TScene& s) { FlipByte(s.Release.Control()); } },
        { "a byte of the signature", NotSigned, [](TScene& s) { FlipByte(s.Release.Signature()); } },
        { "no signature", "does not have it", [](TScene& s) { s.Release.Files.erase("Corvadine.INF.sig"); } },
        { "a short signature", NotSigned, [](TScene& s) { s.Release.Signature().chop(1); } },
        { "a long signature", "is not its size", [](TScene& s) { s.Release.Signature().append('x'); } },
        { "somebody else's key", NotSigned, [](TScene& s) { FlipByte(s.Settings.PublicKey); } },
        { "no key", "Updates are switched off", [](TScene& s) { s.Settings.PublicKey.clear(); } },
        { "another signature value", "\"signature\"", Signed("=WebUpdate", "=webupdate") },
        { "another product", "\"appname\"", Signed("appname=Corvadine", "appname=Other") },
        { "older than the program", "older than version 1.2",
            [](TScene& s) { s.Settings.InstalledVersion = *ParseVersion("1.2"); } },
        { "older than accepted", "older than version 1.1.1", Put("CorvadineUpdate.accepted", "1.1.1\n") },
        { "older than one seen", "older than version 1.2", Put("CorvadineUpdate.known", "1.2.0\n") },
        { "an expired control file", "was valid until 22/11/2020", Signed("=29/10/2120", "=22/11/2020") },
        { "a program that is too old", "too old to be updated",
            Signed("appupdate=1", "appupdate=1\r\nlocalversion=1.0.1") },
        { "a file list without end", "\"count\" in [files]", Signed("count=3", "count=501") },
        { "a package without size", "\"newsize\" in [package1]",
            Signed("=1\r\nnewsize=", "=1\r\nnewsize=-") },
        // Attacks on the connection.
        { "plain HTTP", "is not secure", [](TScene& s) { s.Settings.Url.setScheme("http"); } },
        { "a redirect to HTTP", "is not secure",
            Answer(ControlPath, { Redirect + "http://localhost/\r\n\r\n" }) },
        { "the package redirected to a file", "is not secure",
            Answer(PackageUrlPath, { Redirect + "file:///etc/passwd\r\n\r\n" }) },
        { "a redirect loop", "from one address to the next",
            Answer(ControlPath, { Redirect + ControlPath.toLatin1() + "\r\n\r\n" }) },
        { "an unknown authority", "cannot prove that it is localhost", [](TScene&) {}, "stranger" },
        { "another server's certificate", "cannot prove that it is localhost", [](TScene&) {}, "elsewhere" },
        { "a certificate that is over", "has expired", [](TScene&) {}, "expired" },
        { "no server", "does not accept connections", [](TScene& s) { s.Settings.Url.setPort(1); } },
        { "an endless control file", "sends more than it should", Answer(ControlPath, endless) },
        { "an endless package", "sends more than it should", Answer(PackageUrlPath, endless) },
        { "an endless redirect", "is not secure",
            Answer(ControlPath, { Redirect + "http://localhost/\r\n\r\n", TThen::SendForEver }) },
        { "endless headers", "does not answer any more",
            Impatient(Answer(ControlPath, { "HTTP/1.1 200 OK\r\nX: ", TThen::SendForEver })) },
        { "an endless chunk extension", "sends it in pieces",
            Answer(PackageUrlPath,
                { "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1;", TThen::SendForEver }) },
        { "silence", "does not answer any more", Impatient(Answer(ControlPath, { {}, TThen::Stall })) },
        { "a package that stalls", "does not answer any more",
            Impatient(Answer(PackageUrlPath, { OkHeaders + "MSCF", TThen::Stall })) },
        { "an answer that takes too long", "takes too long",
            [](TScene& s) {
                Answer(ControlPath, { OkHeaders, TThen::Stall })(s);
                s.Settings.Limits.CheckTotal = ShortTime;
            } },
        { "another length announced", "which is not its size", Answer(PackageUrlPath, Ok("MSCF")) },
        { "less than was announced", "the connection too early",
            Answer(PackageUrlPath, { Ok(Release().Package()).Bytes.chopped(1) }) },
        { "less than the publisher says", "bytes of",
            Answer(PackageUrlPath, { OkHeaders + Release().Package().chopped(1) }) },
        { "an error page", "status 500",
            Answer(PackageUrlPath, { "HTTP/1.1 500 Oops\r\nContent-Length: 4\r\n\r\noops" }) },
        // Attacks on the package.
        { "another package of this size", "not the package that",
            [](TScene& s) { FlipByte(s.Release.Package()); } },
        { "a truncated archive", "Cannot unpack",
            [](TScene& s) { s.Release.ReplacePackage(s.Release.Package().chopped(1000)); } },
        { "no archive at all", "Cannot unpack", [](TScene& s) { s.Release.ReplacePackage("hello"); } },
        { "a longer file", "is larger than announced", Signed("newsize=409600", "newsize=409599") },
        { "a shorter file", "is smaller than announced", Signed("newsize=409600", "newsize=409601") },
        { "a file of another hash", "not the file that the publisher",
            Signed(QCryptographicHash::hash(NewPresets, QCryptographicHash::Sha256).toHex(),
                QByteArray(64, '0')) },
        { "a missing file", "is missing",
            [](TScene& s) {
                s.Release.ReplacePackage(TUpdateRelease({ { "corvadine", NewProgram() } }).Package());
            } },
        { "a file twice", "is there twice", Packed("corvadine", NewProgram()) },
        { "a file that was not named", "the publisher's list does not name", Packed("libevil.so") },
        { "the parent folder", BadName, Packed("../evil") },
        { "an absolute name", BadName, Packed("/tmp/evil") },
        { "the database", BadName, Packed("Corvadine.db") },
        { "a link", "is not a regular file",
            [](TScene& s) {
                TUpdateRelease other({ { "corvadine", "/etc/passwd" } }, { "--archive", "zip" });
                const QByteArray file("\0\0\xa4\x81", 4); // permissions and kind of the file
                const QByteArray link("\0\0\xa4\xa1", 4);
                s.Release.ReplacePackage(other.Files["Corvadine.ZIP"].replace(file, link));
            } },
        { "the parent folder in a cabinet", BadName,
            [](TScene& s) {
                QByteArray package = s.Release.Package();
                s.Release.ReplacePackage(package.replace("Corvadine.chm", "..\\corvadine"));
            } },
        // Attacks on the program folder.
        { "a listed name outside", BadName, Signed("targetdir=presets", "targetdir=../presets") },
        { "a listed name of the user's", BadName, Signed("=presets", "=Project Backups") },
        { "a package name with a folder", "\"file\" in [package1]",
            Signed("Corvadine.CAB", "a/Corvadine.CAB") },
        { "two names for one file", "cannot both be installed", Signed("Corvadine.chm", "CORVADINE") },
        { "a program that is a link", "it is a link", Linked("corvadine", "/etc/passwd") },
        { "a folder that is a link", "it is a link", Linked("presets", "/etc") },
        { "a disk without any room", "of free space in", // /proc has no free space
            [](TScene& s) { s.Settings.Folder = TUpdateFolder("/proc"); } },
        { "a disk without room for the package",
            "Cannot download Corvadine.CAB: ", [](TScene& s) { s.LargestFile = quint64 { 64 } * 1024; } },
        { "a disk without room for the files", "Cannot write",
            [](TScene& s) { s.LargestFile = quint64 { 300 } * 1024; } },
    };
}

} // namespace

TEST(UpdateAttackTest, EveryAttackEndsInASentenceAndNoChange)
{
    for (const TAttack& attack : Attacks()) {
        SCOPED_TRACE(attack.Name);
        const QTemporaryDir folder;
        const QString program = folder.filePath("Program");
        PutOldFiles(program);
        TUpdateServer server(attack.Certificate);
        TScene scene { Release(), {}, TestUpdateSettings(server, program) };
        attack.Prepare(scene);
        scene.Release.PutOn(server);
        for (auto answer = scene.Instead.cbegin(); answer != scene.Instead.cend(); ++answer)
            server.Put(answer.key(), answer.value());

        const auto before = ContentOf(folder.path());
        const TUpdateOutcome outcome = [&scene] {
            const TFileSizeLimit disk(scene.LargestFile);
            TUpdateEngine engine(scene.Settings);
            return RunDownload(engine, { 0, 1, 2 });
        }();
        EXPECT_THAT(outcome.Text.toStdString(), HasSubstr(attack.Text));
        EXPECT_TRUE(ContentOf(folder.path()) == before);
        EXPECT_FALSE(QFileInfo::exists(TUpdateFolder(program).Staging()));
    }
}

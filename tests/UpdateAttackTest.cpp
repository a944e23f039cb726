#include "support/StagedUpdate.h"
#include "support/UpdateEngine.h"
#include "tests/Testing.h"
#include "tests/TestingSystem.h"
#include "tests/UpdateTesting.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>

#include <archive.h>
#include <archive_entry.h>

#include <chrono>
#include <functional>

// What attackers and accidents can do to an update: each row is one, and each ends in a sentence for the user
// and a program folder as it was.

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

namespace {

struct TZipEntry {
    const char* Name;
    QByteArray Content;
    const char* LinkTarget = nullptr;
};

QByteArray MakeZip(const std::vector<TZipEntry>& entries)
{
    QByteArray bytes(4 * 1024 * 1024, '\0');
    std::size_t used = 0;
    ::archive* const archive = archive_write_new();
    archive_write_set_format_zip(archive);
    archive_write_open_memory(archive, bytes.data(), static_cast<std::size_t>(bytes.size()), &used);
    for (const TZipEntry& entry : entries) {
        archive_entry* const header = archive_entry_new();
        archive_entry_set_pathname(header, entry.Name);
        archive_entry_set_filetype(header, entry.LinkTarget ? AE_IFLNK : AE_IFREG);
        archive_entry_set_perm(header, 0644);
        if (entry.LinkTarget)
            archive_entry_set_symlink(header, entry.LinkTarget);
        archive_entry_set_size(header, entry.Content.size());
        EXPECT_EQ(archive_write_header(archive, header), ARCHIVE_OK) << archive_error_string(archive);
        archive_write_data(
            archive, entry.Content.constData(), static_cast<std::size_t>(entry.Content.size()));
        archive_entry_free(header);
    }
    archive_write_close(archive);
    archive_write_free(archive);
    return bytes.left(static_cast<qsizetype>(used));
}

// A package with all that it should have, and one more entry ahead.
QByteArray ZipWith(const TZipEntry& entry)
{
    return MakeZip({ entry, { "corvadine", NewProgram() }, { "Corvadine.chm", NewHelp },
        { "presets/colours.txt", NewPresets } });
}

void FlipByte(QByteArray& bytes)
{
    char& byte = bytes.data()[bytes.size() / 2];
    byte = static_cast<char>(byte ^ 1);
}

// What an attacker or an accident may change before the user asks for updates.
struct TScene {
    TUpdateRelease Release;          // what is put on the server
    QHash<QString, TAnswer> Instead; // answers in place of the release's files
    TUpdateSettings Settings;
    QString Program;
    quint64 LargestFile = std::numeric_limits<quint64>::max();
};

struct TAttack {
    const char* Name;
    std::string Text; // part of what the user is told
    std::function<void(TScene&)> Prepare;
    const char* Certificate = "localhost";
};

// Signs what the change has made of the control file, as the publisher might by mistake.
std::function<void(TScene&)> Signed(const QByteArray& from, const QByteArray& to)
{
    return [=](TScene& scene) {
        scene.Release.Replace(from, to);
        scene.Release.Sign();
    };
}

std::function<void(TScene&)> Packed(const TZipEntry& entry)
{
    return [=](TScene& scene) { scene.Release.ReplacePackage(ZipWith(entry)); };
}

std::function<void(TScene&)> Answered(const QString& path, const TAnswer& answer)
{
    return [=](TScene& scene) { scene.Instead[path] = answer; };
}

constexpr std::chrono::milliseconds ShortTime { 700 };

std::function<void(TScene&)> Stalled(const QString& path, const QByteArray& bytes, TThen then = TThen::Stall)
{
    return [=](TScene& scene) {
        scene.Instead[path] = { bytes, then };
        scene.Settings.Limits.Headers = scene.Settings.Limits.Stall = ShortTime;
    };
}

const std::string NotSigned = "is not signed by Corvadine's publisher";
const std::string BadName = "Cannot accept the file name";
const QString ControlPath = TUpdateSettings::ControlFilePath;

std::vector<TAttack> AttacksOnTheAnswer()
{
    return {
        { "a byte of the control file", NotSigned, [](TScene& s) { FlipByte(s.Release.Control()); } },
        { "a byte of the signature", NotSigned, [](TScene& s) { FlipByte(s.Release.Signature()); } },
        { "no signature", "does not have it", [](TScene& s) { s.Release.Files.erase("Corvadine.INF.sig"); } },
        { "a short signature", NotSigned, [](TScene& s) { s.Release.Signature().chop(1); } },
        { "a long signature", "is not its size", [](TScene& s) { s.Release.Signature().append('x'); } },
        { "somebody else's key", NotSigned, [](TScene& s) { FlipByte(s.Settings.PublicKey); } },
        { "no key", "Updates are switched off", [](TScene& s) { s.Settings.PublicKey.clear(); } },
        { "another signature value", "\"signature\"", Signed("=WebUpdate", "=webupdate") },
        { "another product", "\"appname\"", Signed("appname=Corvadine", "appname=Other") },
        { "an older program's control file", "older than version 1.2",
            [](TScene& s) { s.Settings.InstalledVersion = "1.2.0"; } },
        { "a control file older than the accepted one", "older than version 1.1.1",
            [](TScene& s) { PutFile(s.Program + "/CorvadineUpdate.accepted", "1.1.1\n"); } },
        { "a control file older than one seen", "older than version 1.2",
            [](TScene& s) { PutFile(s.Program + "/CorvadineUpdate.known", "1.2.0\n"); } },
        { "an expired control file", "was valid until 22/11/2020",
            Signed("validuntil=29/10/2120", "validuntil=22/11/2020") },
        { "a program that is too old", "too old to be updated",
            Signed("\r\n\r\n[packages]", "\r\nlocalversion=1.0.1\r\n\r\n[packages]") },
        { "a file list without end", "\"count\" in [files]", Signed("count=3", "count=501") },
        { "a package without size", "\"newsize\" in [package1]",
            Signed("compressed=1\r\nnewsize=", "compressed=1\r\nnewsize=-") },
    };
}

std::vector<TAttack> AttacksOnTheLine()
{
    return {
        { "plain HTTP", "is not secure", [](TScene& s) { s.Settings.Url.setScheme("http"); } },
        { "a redirect to HTTP", "is not secure",
            Answered(ControlPath, RedirectTo("http://localhost/Corvadine.INF")) },
        { "a redirect of the package to a file", "is not secure",
            Answered(PackageUrlPath, RedirectTo("file:///etc/passwd")) },
        { "a redirect loop", "from one address to the next", Answered(ControlPath, RedirectTo(ControlPath)) },
        { "an unknown authority", "cannot prove that it is localhost", [](TScene&) {}, "stranger" },
        { "another server's certificate", "cannot prove that it is localhost", [](TScene&) {}, "elsewhere" },
        { "a certificate that is over", "has expired", [](TScene&) {}, "expired" },
        { "no server", "does not accept connections", [](TScene& s) { s.Settings.Url.setPort(1); } },
        { "an endless control file", "sends more than it should",
            Answered(ControlPath, { OkHeaders, TThen::SendForEver }) },
        { "an endless package", "sends more than it should",
            Answered(PackageUrlPath, { OkHeaders, TThen::SendForEver }) },
        { "an endless redirect", "is not secure",
            Answered(ControlPath,
                { "HTTP/1.1 301 Gone\r\nLocation: http://localhost/\r\n\r\n", TThen::SendForEver }) },
        { "endless headers", "does not answer any more",
            Stalled(ControlPath, "HTTP/1.1 200 OK\r\nX: ", TThen::SendForEver) },
        { "an endless chunk extension", "sends it in pieces",
            Answered(PackageUrlPath,
                { "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1;", TThen::SendForEver }) },
        { "silence", "does not answer any more", Stalled(ControlPath, {}) },
        { "a package that stalls", "does not answer any more", Stalled(PackageUrlPath, OkHeaders + "MSCF") },
        { "an answer that takes too long", "takes too long",
            [](TScene& s) {
                s.Instead[ControlPath] = { OkHeaders, TThen::Stall };
                s.Settings.Limits.CheckTotal = ShortTime;
            } },
        { "another length announced", "which is not its size", Answered(PackageUrlPath, Ok("MSCF")) },
        { "less than was announced", "the connection too early",
            [](TScene& s) {
                s.Instead[PackageUrlPath] = Ok(s.Release.Package());
                s.Instead[PackageUrlPath].Bytes.chop(1);
            } },
        { "less than the publisher says", "bytes of",
            [](TScene& s) { s.Instead[PackageUrlPath] = { OkHeaders + s.Release.Package().chopped(1) }; } },
        { "an error page", "status 500",
            Answered(PackageUrlPath, { "HTTP/1.1 500 Oops\r\nContent-Length: 4\r\n\r\noops" }) },
    };
}

std::vector<TAttack> AttacksOnThePackage()
{
    const std::string notKnown = "the publisher's list does not name";
    return {
        { "a byte of the package", "not the package that", [](TScene& s) { FlipByte(s.Release.Package()); } },
        { "an older package under the new name", "not the package that",
            [](TScene& s) {
                QByteArray older = ZipWith({ "corvadine.old", {} });
                older.resize(s.Release.Package().size());
                s.Release.Package() = older;
            } },
        { "a truncated archive", "Cannot unpack",
            [](TScene& s) { s.Release.ReplacePackage(s.Release.Package().chopped(1000)); } },
        { "no archive at all", "Cannot unpack", [](TScene& s) { s.Release.ReplacePackage("hello"); } },
        { "a file of another length", "is larger than announced",
            Signed("newsize=409600", "newsize=409599") },
        { "a shorter file", "is smaller than announced", Signed("newsize=409600", "newsize=409601") },
        { "a file of another hash", "not the file that the publisher",
            Signed(QCryptographicHash::hash(NewPresets, QCryptographicHash::Sha256).toHex(),
                QByteArray(64, '0')) },
        { "a missing file", "is missing",
            [](TScene& s) {
                s.Release.ReplacePackage(MakeZip({ { "corvadine", NewProgram() } }));
            } },
        { "a file twice", "is there twice", Packed({ "corvadine", NewProgram() }) },
        { "a file nobody named", notKnown, Packed({ "libevil.so", "evil" }) },
        { "the parent folder", BadName, Packed({ "../evil", "evil" }) },
        { "an absolute name", BadName, Packed({ "/tmp/evil", "evil" }) },
        { "a drive", BadName, Packed({ "C:\\evil", "evil" }) },
        { "the database", BadName, Packed({ "Corvadine.db", "evil" }) },
        { "a link", "is not a regular file", Packed({ "corvadine", {}, "/etc/passwd" }) },
        { "the parent folder in a cabinet", BadName,
            [](TScene& s) {
                QByteArray package = s.Release.Package();
                package.replace("Corvadine.chm", "..\\corvadine");
                s.Release.ReplacePackage(package);
            } },
    };
}

std::vector<TAttack> AttacksOnTheFolder()
{
    return {
        { "a listed name that leaves the folder", BadName,
            Signed("targetdir=presets", "targetdir=../presets") },
        { "a listed name of the user's", BadName, Signed("targetdir=presets", "targetdir=Project Backups") },
        { "a package name with a folder", "\"file\" in [package1]",
            Signed("file=Corvadine.CAB", "file=presets/Corvadine.CAB") },
        { "two names for one file", "cannot both be installed",
            Signed("file=Corvadine.chm", "file=CORVADINE") },
        { "a program that is a link", "it is a link",
            [](TScene& s) {
                QFile::remove(s.Program + "/corvadine");
                QFile::link("/etc/passwd", s.Program + "/corvadine");
            } },
        { "a folder that is a link", "it is a link",
            [](TScene& s) {
                QDir(s.Program + "/presets").removeRecursively();
                QFile::link("/etc", s.Program + "/presets");
            } },
        { "a disk without any room", "of free space in", // as the kernel's own folders say
            [](TScene& s) { s.Settings.ProgramFolder = "/proc"; } },
        { "a disk without room for the package",
            "Cannot download Corvadine.CAB: ", [](TScene& s) { s.LargestFile = quint64 { 64 } * 1024; } },
        { "a disk without room for the files", "Cannot write",
            [](TScene& s) { s.LargestFile = quint64 { 300 } * 1024; } },
    };
}

TUpdateOutcome CheckAndDownload(const TScene& scene)
{
    const TFileSizeLimit disk(scene.LargestFile);
    TUpdateEngine engine(scene.Settings);
    const TUpdateOutcome checked = RunCheck(engine);
    return checked.Items.empty() ? checked : RunDownload(engine, { 0, 1, 2 });
}

void ExpectRefused(const TAttack& attack)
{
    SCOPED_TRACE(attack.Name);
    const QTemporaryDir folder;
    const QString program = folder.filePath("Program");
    PutOldFiles(program);
    TUpdateServer server(attack.Certificate);
    TScene scene { Release(), {}, TestUpdateSettings(server, program), program };
    attack.Prepare(scene);
    scene.Release.PutOn(server);
    for (auto answer = scene.Instead.cbegin(); answer != scene.Instead.cend(); ++answer)
        server.Put(answer.key(), answer.value());

    const auto before = ContentOf(folder.path());
    const TUpdateOutcome outcome = CheckAndDownload(scene);
    EXPECT_EQ(outcome.Signal, u"Failed");
    EXPECT_THAT(outcome.Text.toStdString(), HasSubstr(attack.Text));
    EXPECT_TRUE(ContentOf(folder.path()) == before);
    EXPECT_FALSE(QFileInfo::exists(StagingFolderOf(program)));
}

} // namespace

TEST(UpdateAttackTest, EveryAttackEndsInASentenceAndNoChange)
{
    for (const auto& attacks :
        { AttacksOnTheAnswer(), AttacksOnTheLine(), AttacksOnThePackage(), AttacksOnTheFolder() })
        for (const TAttack& attack : attacks)
            ExpectRefused(attack);
}

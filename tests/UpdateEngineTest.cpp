#include "support/UpdateEngine.h"

#include "support/AcceptedVersion.h"
#include "support/StagedUpdate.h"
#include "tests/Testing.h"
#include "tests/UpdateTesting.h"

#include <QDateTime>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <archive.h>
#include <archive_entry.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <optional>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::HasSubstr;

namespace {

const QString PackagePath = QStringLiteral("/Corvadine/Corvadine.CAB");
const QString SignaturePath = QStringLiteral("/Corvadine/Corvadine.INF.sig");
const QByteArray NewHelp(400 * 1024, 'h'); // packs well
const QByteArray NewPresets = "new presets";

// Does not pack, so the package is about as large.
const QByteArray& NewProgram()
{
    static const QByteArray Bytes = [] {
        QByteArray bytes(200 * 1024, '\0');
        QRandomGenerator random(1);
        for (char& byte : bytes)
            byte = static_cast<char>(random.generate());
        return bytes;
    }();
    return Bytes;
}

void PutNewFiles(const QString& folder)
{
    QDir().mkpath(folder + QStringLiteral("/presets"));
    PutFile(folder + QStringLiteral("/corvadine"), NewProgram());
    QFile::setPermissions(
        folder + QStringLiteral("/corvadine"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    PutFile(folder + QStringLiteral("/Corvadine.chm"), NewHelp);
    PutFile(folder + QStringLiteral("/presets/colours.txt"), NewPresets);
}

TUpdateRelease MakeRelease(const QString& version, const QStringList& arguments = {})
{
    const QTemporaryDir folder;
    PutNewFiles(folder.path());
    return { folder.path(), version, arguments };
}

// Version 1.1.0, made once: by version, by checksum and optional, by checksum.
TUpdateRelease Release()
{
    static const TUpdateRelease Made = MakeRelease(QStringLiteral("1.1.0"),
        { QStringLiteral("--by-version"), QStringLiteral("corvadine"), QStringLiteral("--optional"),
            QStringLiteral("*.chm"), QStringLiteral("--describe"),
            QStringLiteral("*.chm=The help, 100 % new") });
    return Made;
}

class UpdateEngineTest : public TFolderTest {
protected:
    UpdateEngineTest()
    {
        QDir().mkpath(Program() + QStringLiteral("/presets"));
        PutFile(Program(QStringLiteral("corvadine")), "old program");
        PutFile(Program(QStringLiteral("Corvadine.chm")), "old help");
        PutFile(Program(QStringLiteral("presets/colours.txt")), "old presets");
        PutFile(Program(QStringLiteral("Corvadine.db")), "database");
    }

    QString Program() const { return Path(QStringLiteral("Program")); }
    QString Program(const QString& name) const { return Program() + u'/' + name; }
    QString Staging() const { return StagingFolderOf(Program()); }
};

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

// While it lives, no file grows beyond so many bytes: as a full disk, as far as a program can tell.
class TFullDisk {
public:
    explicit TFullDisk(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &FBefore);
        const rlimit now { bytes, FBefore.rlim_max };
        ::setrlimit(RLIMIT_FSIZE, &now);
    }
    ~TFullDisk() { ::setrlimit(RLIMIT_FSIZE, &FBefore); }
    Q_DISABLE_COPY_MOVE(TFullDisk)

private:
    rlimit FBefore {};
};

// While it lives, nobody but the owner writes to the folder, and we are not its owner.
class TForeignFolder {
public:
    explicit TForeignFolder(const QString& path) : FPath(QFile::encodeName(path)), FUser(::geteuid())
    {
        ::chmod(FPath.constData(), 0555);
        ::chmod((FPath + "/..").constData(), 0755);
        constexpr uid_t Nobody = 65534; // the superuser writes everywhere
        const int result = FUser == 0 ? ::seteuid(Nobody) : 0;
        EXPECT_EQ(result, 0);
    }
    ~TForeignFolder()
    {
        EXPECT_EQ(::seteuid(FUser), 0);
        ::chmod(FPath.constData(), 0755);
    }
    Q_DISABLE_COPY_MOVE(TForeignFolder)

private:
    QByteArray FPath;
    uid_t FUser;
};

// What an attacker or an accident may change before the user asks for updates.
struct TScene {
    TUpdateRelease Release;          // what is put on the server
    QHash<QString, TAnswer> Instead; // answers in place of the release's files
    TUpdateSettings Settings;
    QString Program;
    TUpdateServer& Server;
    rlim_t LargestFile = RLIM_INFINITY;
    bool IsForeign = false; // the program folder is not ours
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

const std::string NotSigned = "is not signed by Corvadine's publisher";
const std::string BadName = "Cannot accept the file name";
const QString ControlPath = TUpdateSettings::ControlFilePath;
const QByteArray OkHeaders = "HTTP/1.1 200 OK\r\n\r\n";

std::vector<TAttack> AttacksOnTheAnswer()
{
    return {
        { "a byte of the control file", NotSigned, [](TScene& s) { FlipByte(s.Release.Control()); } },
        { "a byte of the signature", NotSigned, [](TScene& s) { FlipByte(s.Release.Signature()); } },
        { "no signature", "does not have it",
            [](TScene& s) { s.Release.Files.remove(QStringLiteral("Corvadine.INF.sig")); } },
        { "a short signature", NotSigned, [](TScene& s) { s.Release.Signature().chop(1); } },
        { "a long signature", "is not its size", [](TScene& s) { s.Release.Signature().append('x'); } },
        { "somebody else's key", NotSigned, [](TScene& s) { FlipByte(s.Settings.PublicKey); } },
        { "no key", "Updates are switched off", [](TScene& s) { s.Settings.PublicKey.clear(); } },
        { "another signature value", "\"signature\"", Signed("=WebUpdate", "=webupdate") },
        { "another product", "\"appname\"", Signed("appname=Corvadine", "appname=Other") },
        { "an older program's control file", "older than version 1.2",
            [](TScene& s) { s.Settings.InstalledVersion = QStringLiteral("1.2.0"); } },
        { "a control file older than the accepted one", "older than version 1.1.1",
            [](TScene& s) { PutFile(s.Program + QStringLiteral("/CorvadineUpdate.accepted"), "1.1.1\n"); } },
        { "an expired control file", "was valid until 22/11/2020",
            [](TScene& s) {
                const auto at = s.Release.Control().indexOf("validuntil=") + 11;
                s.Release.Control().replace(at, 10, "22/11/2020");
                s.Release.Sign();
            } },
        { "a program that is too old", "too old to be updated",
            Signed("newversion=1.1.0\r\ndate=22/11/2020\r\ntime=14:30\r\n\r\n[packages]",
                "localversion=1.0.1\r\nnewversion=1.1.0\r\ndate=22/11/"
                "2020\r\ntime=14:30\r\n\r\n[packages]") },
        { "a file list without end", "\"count\" in [files]", Signed("count=3", "count=501") },
        { "a package without size", "\"newsize\" in [package1]",
            Signed("compressed=1\r\nnewsize=", "compressed=1\r\nnewsize=-") },
    };
}

std::vector<TAttack> AttacksOnTheLine()
{
    return {
        { "plain HTTP", "is not secure",
            [](TScene& s) { s.Settings.Url.setScheme(QStringLiteral("http")); } },
        { "a redirect to HTTP", "is not secure",
            Answered(ControlPath, RedirectTo(QStringLiteral("http://localhost/Corvadine.INF"))) },
        { "a redirect of the package to a file", "is not secure",
            Answered(PackagePath, RedirectTo(QStringLiteral("file:///etc/passwd"))) },
        { "a redirect loop", "from one address to the next", Answered(ControlPath, RedirectTo(ControlPath)) },
        { "an unknown authority", "cannot prove that it is localhost", [](TScene&) {}, "stranger" },
        { "another server's certificate", "cannot prove that it is localhost", [](TScene&) {}, "elsewhere" },
        { "no server", "does not accept connections", [](TScene& s) { s.Settings.Url.setPort(1); } },
        { "an endless control file", "sends more than it should",
            Answered(ControlPath, { OkHeaders, TThen::SendForEver }) },
        { "an endless package", "sends more than it should",
            Answered(PackagePath, { OkHeaders, TThen::SendForEver }) },
        { "an endless redirect", "is not secure",
            Answered(ControlPath,
                { "HTTP/1.1 301 Gone\r\nLocation: http://localhost/\r\n\r\n", TThen::SendForEver }) },
        { "silence", "does not answer any more", Answered(ControlPath, { {}, TThen::Stall }) },
        { "a package that stalls", "does not answer any more",
            Answered(PackagePath, { OkHeaders + "MSCF", TThen::Stall }) },
        { "an answer that takes too long", "takes too long",
            [](TScene& s) {
                s.Instead[ControlPath] = { OkHeaders, TThen::Stall };
                s.Settings.Limits.CheckTotal = s.Settings.Limits.Stall / 2;
            } },
        { "another length announced", "which is not its size", Answered(PackagePath, Ok("MSCF")) },
        { "less than was announced", "the connection too early",
            [](TScene& s) {
                TAnswer answer = Ok(s.Release.Package());
                answer.Bytes.chop(1);
                s.Instead[PackagePath] = answer;
            } },
        { "less than the publisher says", "bytes of",
            [](TScene& s) { s.Instead[PackagePath] = { OkHeaders + s.Release.Package().chopped(1) }; } },
        { "an error page", "status 500",
            Answered(PackagePath, { "HTTP/1.1 500 Oops\r\nContent-Length: 4\r\n\r\noops" }) },
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
            [](TScene& s) {
                const auto at = s.Release.Control().lastIndexOf("newchecksum=") + 12;
                s.Release.Control().replace(at, 4, "0000");
                s.Release.Sign();
            } },
        { "a missing file", "is missing",
            [](TScene& s) {
                s.Release.ReplacePackage(MakeZip({ { "corvadine", NewProgram() } }));
            } },
        { "a file twice", "is there twice", Packed({ "corvadine", NewProgram() }) },
        { "a file nobody named", notKnown, Packed({ "libevil.so", "evil" }) },
        { "the parent folder", BadName, Packed({ "../evil", "evil" }) },
        { "the parent folder within", BadName, Packed({ "presets/../../evil", "evil" }) },
        { "an absolute name", BadName, Packed({ "/tmp/evil", "evil" }) },
        { "a drive", BadName, Packed({ "C:\\evil", "evil" }) },
        { "a share", BadName, Packed({ "\\\\server\\share\\evil", "evil" }) },
        { "a stream", BadName, Packed({ "corvadine:evil", "evil" }) },
        { "a device", BadName, Packed({ "presets/nul.txt", "evil" }) },
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
                QFile::remove(s.Program + QStringLiteral("/corvadine"));
                QFile::link(QStringLiteral("/etc/passwd"), s.Program + QStringLiteral("/corvadine"));
            } },
        { "a folder that is a link", "it is a link",
            [](TScene& s) {
                QDir(s.Program + QStringLiteral("/presets")).removeRecursively();
                QFile::link(QStringLiteral("/etc"), s.Program + QStringLiteral("/presets"));
            } },
        { "a folder that cannot be written", "the folder cannot be written",
            [](TScene& s) { s.IsForeign = true; } },
        { "a disk without room for the package",
            "Cannot download Corvadine.CAB: ", [](TScene& s) { s.LargestFile = rlim_t { 64 } * 1024; } },
        { "a disk without room for the files", "Cannot write",
            [](TScene& s) { s.LargestFile = rlim_t { 300 } * 1024; } },
    };
}

class UpdateAttackTest : public UpdateEngineTest {
protected:
    void ExpectRefused(const TAttack& attack)
    {
        SCOPED_TRACE(attack.Name);

        const QTemporaryDir folder;
        const QString program = folder.filePath(QStringLiteral("Program"));
        QDir().mkpath(program + QStringLiteral("/presets"));
        for (const char* name : { "corvadine", "Corvadine.chm", "presets/colours.txt", "Corvadine.db" })
            PutFile(program + u'/' + QString::fromLatin1(name), "old");

        TUpdateServer server(QString::fromLatin1(attack.Certificate));
        TScene scene { Release(), {}, TestUpdateSettings(server, program), program, server };
        attack.Prepare(scene);
        scene.Release.PutOn(server);
        for (auto answer = scene.Instead.cbegin(); answer != scene.Instead.cend(); ++answer)
            server.Put(answer.key(), answer.value());

        const auto before = FolderContent(folder.path());
        const TUpdateOutcome outcome = CheckAndDownload(scene);
        EXPECT_EQ(outcome.Signal, u"Failed");
        EXPECT_THAT(outcome.Text.toStdString(), HasSubstr(attack.Text));
        EXPECT_FALSE(outcome.Text.contains(u'\n'));
        EXPECT_TRUE(FolderContent(folder.path()) == before);
        EXPECT_FALSE(QFileInfo::exists(StagingFolderOf(program)));
    }

private:
    static TUpdateOutcome CheckAndDownload(const TScene& scene)
    {
        const TFullDisk disk(scene.LargestFile);
        std::optional<TForeignFolder> foreign;
        if (scene.IsForeign)
            foreign.emplace(scene.Program);
        TUpdateEngine engine(scene.Settings);
        const TUpdateOutcome checked = RunCheck(engine);
        return checked.Items.empty() ? checked : RunDownload(engine, { 0, 1, 2 });
    }
};

} // namespace

TEST_F(UpdateAttackTest, EveryAttackEndsInASentenceAndNoChange)
{
    for (const auto& attacks :
        { AttacksOnTheAnswer(), AttacksOnTheLine(), AttacksOnThePackage(), AttacksOnTheFolder() })
        for (const TAttack& attack : attacks)
            ExpectRefused(attack);
}

TEST_F(UpdateEngineTest, DownloadsWhatIsNewer)
{
    QFile presets(Program(QStringLiteral("presets/colours.txt")));
    ASSERT_TRUE(presets.open(QIODevice::ReadWrite));
    presets.setFileTime(QDateTime({ 2019, 1, 1 }, { 0, 0 }, Qt::UTC), QFile::FileModificationTime);
    presets.close();
    const auto before = FolderContent(Program());
    for (const char* archive : { "cab", "zip", "none" }) {
        SCOPED_TRACE(archive);
        TUpdateServer server;
        const TUpdateRelease release = MakeRelease(QStringLiteral("1.1.0"),
            { QStringLiteral("--archive"), QString::fromLatin1(archive), QStringLiteral("--by-version"),
                QStringLiteral("corvadine"), QStringLiteral("--by-date"), QStringLiteral("presets/*"),
                QStringLiteral("--optional"), QStringLiteral("*.chm"), QStringLiteral("--describe"),
                QStringLiteral("*.chm=The help, 100 % new") });
        release.PutOn(server);
        TUpdateEngine engine(TestUpdateSettings(server, Program()));

        const auto items = RunCheck(engine).Items;
        ASSERT_EQ(items.size(), 3);
        EXPECT_EQ(items[0].Name, u"Corvadine.chm");
        EXPECT_EQ(items[0].Description, u"The help, 100 % new");
        EXPECT_EQ(items[0].Date, QDateTime({ 2020, 11, 22 }, { 14, 30 }, Qt::UTC));
        EXPECT_EQ(items[0].Size, NewHelp.size());
        EXPECT_EQ(items[0].Version, u"1.1.0");
        EXPECT_FALSE(items[0].Mandatory);
        EXPECT_TRUE(items[1].Mandatory && items[2].Mandatory);
        EXPECT_TRUE(FolderContent(Program()) == before);
        EXPECT_TRUE(server.Requests().first().contains(QStringLiteral("User-Agent: TWebUpdate\r\n")));

        // The mandatory ones come along.
        const TUpdateOutcome outcome = RunDownload(engine, {});
        ASSERT_EQ(outcome.Signal, u"Downloaded") << outcome.Text.toStdString();
        EXPECT_EQ(outcome.Update.Version, u"1.1.0");
        EXPECT_EQ(outcome.LastDone, outcome.Total);
        ASSERT_EQ(outcome.Update.Files.size(), 2);
        const TStagedUpdateFile& program = outcome.Update.Files[0];
        EXPECT_EQ(program.Target, u"corvadine");
        EXPECT_EQ(FileBytes(program.StagedPath), NewProgram());
        EXPECT_TRUE(QFileInfo(program.StagedPath).isExecutable());
        EXPECT_EQ(FileBytes(outcome.Update.Files[1].StagedPath), NewPresets);
        EXPECT_FALSE(QFileInfo(outcome.Update.Files[1].StagedPath).isExecutable());
        EXPECT_EQ(QFileInfo(outcome.Update.Files[1].StagedPath).lastModified(), items[2].Date);
        EXPECT_EQ(QFileInfo(Staging()).permissions() & (QFile::ReadGroup | QFile::ReadOther), 0);
        EXPECT_EQ(FileBytes(Program(QStringLiteral("corvadine"))), "old program");
    }
}

TEST_F(UpdateEngineTest, FindsNothingNewer)
{
    TUpdateServer server;
    const TUpdateRelease release = Release();
    release.PutOn(server);
    const TUpdateSettings settings = TestUpdateSettings(server, Program());
    const auto newer = [&](const TUpdateSettings& with) {
        TUpdateEngine engine(with);
        const TUpdateOutcome outcome = RunCheck(engine);
        EXPECT_EQ(outcome.Signal, u"Checked") << outcome.Text.toStdString();
        return outcome.Items.size();
    };
    EXPECT_EQ(newer(settings), 3);

    TUpdateSettings current = settings;
    current.InstalledVersion = QStringLiteral("1.1");
    EXPECT_EQ(newer(current), 0) << "the same version";

    TUpdateRelease withdrawn = release;
    withdrawn.Replace("appupdate=1", "appupdate=0");
    withdrawn.Sign();
    withdrawn.PutOn(server);
    EXPECT_EQ(newer(settings), 0) << "a withdrawn release";

    TUpdateRelease foreign = release;
    foreign.Replace("compare=", "platform=windows-x86_64\r\ncompare=");
    foreign.Sign();
    foreign.PutOn(server);
    EXPECT_EQ(newer(settings), 0) << "another platform's files";

    // What has the right bytes or is younger is left alone, file by file.
    TUpdateRelease byDate = release;
    byDate.Replace("compare=version", "compare=date");
    byDate.Sign();
    byDate.PutOn(server);
    PutFile(Program(QStringLiteral("Corvadine.chm")), NewHelp);
    EXPECT_EQ(newer(settings), 1);

    release.PutOn(server);
    RecordAcceptedVersion(Program(), QStringLiteral("1.1.0"));
    EXPECT_EQ(newer(settings), 0) << "accepted before";
    PutFile(Program(QStringLiteral("CorvadineUpdate.accepted")), QByteArray(1000, '9'));
    EXPECT_EQ(newer(settings), 2) << "a record that is rubbish locks nobody out";
}

TEST_F(UpdateEngineTest, CanBeCancelledAtEveryStep)
{
    TUpdateServer server;
    Release().PutOn(server);
    const auto before = FolderContent(Program());
    TUpdateEngine engine(TestUpdateSettings(server, Program()));
    engine.Cancel(); // nothing runs
    engine.Check();
    engine.Cancel();
    engine.Cancel();
    EXPECT_EQ(AwaitOutcome(engine).Signal, u"Cancelled");

    ASSERT_EQ(RunCheck(engine).Items.size(), 3);
    // From within the engine's own signal, in the middle of the package.
    server.Put(PackagePath, { OkHeaders + Release().Package().left(100'000), TThen::Stall });
    QObject context;
    QObject::connect(&engine, &TUpdateEngine::Progress, &context, [&] {
        EXPECT_TRUE(QFileInfo::exists(Staging()));
        engine.Cancel();
    });
    EXPECT_EQ(RunDownload(engine, { 0 }).Signal, u"Cancelled");
    EXPECT_FALSE(QFileInfo::exists(Staging()));
    EXPECT_TRUE(FolderContent(Program()) == before);

    // An engine that goes takes its download along.
    QObject::disconnect(&engine, nullptr, &context, nullptr);
    {
        TUpdateEngine shortLived(TestUpdateSettings(server, Program()));
        ASSERT_EQ(RunCheck(shortLived).Items.size(), 3);
        QEventLoop loop;
        QObject::connect(&shortLived, &TUpdateEngine::Progress, &loop, &QEventLoop::quit);
        shortLived.Download({ 0 });
        loop.exec();
        EXPECT_TRUE(QFileInfo::exists(Staging()));
    }
    EXPECT_FALSE(QFileInfo::exists(Staging()));
}

TEST_F(UpdateEngineTest, RemovesLeftoversUnlessSomebodyIsAtWork)
{
    TUpdateServer server;
    Release().PutOn(server);
    TUpdateEngine engine(TestUpdateSettings(server, Program()));
    QDir().mkpath(Staging() + QStringLiteral("/files"));
    QFile::link(Program(), Staging() + QStringLiteral("/files/link"));
    {
        const TUpdateLock lock(Program());
        ASSERT_EQ(RunCheck(engine).Items.size(), 3);
        EXPECT_TRUE(QFileInfo::exists(Staging()));
        EXPECT_THAT(RunDownload(engine, { 0 }).Text.toStdString(), HasSubstr("Another copy of Corvadine"));
        EXPECT_TRUE(QFileInfo::exists(Staging()));
    }
    ASSERT_EQ(RunCheck(engine).Items.size(), 3);
    EXPECT_FALSE(QFileInfo::exists(Staging()));
    EXPECT_EQ(FileBytes(Program(QStringLiteral("Corvadine.db"))), "database");

    ASSERT_EQ(RunDownload(engine, { 0 }).Signal, u"Downloaded");
    EXPECT_THAT(ErrorOf([&] { const TUpdateLock lock(Program()); }), HasSubstr("Another copy of Corvadine"));
}

TEST_F(UpdateEngineTest, AStagedUpdateIsTrustedForWhatItIs)
{
    TUpdateServer server;
    Release().PutOn(server);
    TUpdateSettings settings = TestUpdateSettings(server, Program());
    TUpdateEngine engine(settings);
    ASSERT_EQ(RunCheck(engine).Items.size(), 3);
    const TUpdateOutcome outcome = RunDownload(engine, { 0, 1, 2 });
    ASSERT_EQ(outcome.Signal, u"Downloaded");
    const QString help = outcome.Update.Files[0].StagedPath;
    const auto error = [&] { return ErrorOf([&] { ReadStagedUpdate(settings); }); };
    ASSERT_EQ(ReadStagedUpdate(settings).Files.size(), 3);

    PutFile(help, QByteArray(NewHelp.size(), 'x'));
    EXPECT_THAT(error(), HasSubstr("not the file that the publisher released"));
    QFile::remove(help);
    QFile::link(outcome.Update.Files[1].StagedPath, help);
    EXPECT_THAT(error(), HasSubstr("it is a link"));
    QFile::remove(help);
    EXPECT_EQ(ReadStagedUpdate(settings).Files.size(), 2) << "the user may leave files out";
    PutFile(help + u'x', NewHelp);
    EXPECT_THAT(error(), HasSubstr("does not name it"));
    QFile::remove(help + u'x');

    settings.InstalledVersion = QStringLiteral("1.1.0");
    EXPECT_THAT(error(), HasSubstr("already installed"));
    settings.InstalledVersion = QStringLiteral("1.0.0");
    const QString control = Staging() + QStringLiteral("/Corvadine.INF");
    PutFile(control, FileBytes(control) + ";\r\n");
    EXPECT_THAT(error(), HasSubstr(NotSigned));
}

#include "base/StagedFile.h"

#include "base/Files.h"
#include "base/WindowsPath.h"
#include "tests/Testing.h"

#include <QDir>

#include <qt_windows.h>

#include <thread>

using namespace Corvadine;
using namespace Corvadine::Testing;

namespace {

// A file that another program has opened for reading. Without `share`, no other program can open the file.
class TOpenFile {
public:
    explicit TOpenFile(const QString& path, DWORD share = 0)
        : FHandle(
            ::CreateFileW(SystemPath(path).c_str(), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr))
    {
        EXPECT_NE(FHandle, INVALID_HANDLE_VALUE);
    }
    ~TOpenFile() { ::CloseHandle(FHandle); }
    Q_DISABLE_COPY_MOVE(TOpenFile)

private:
    HANDLE FHandle;
};

class StagedFileWindowsTest : public TFolderTest { };

} // namespace

TEST_F(StagedFileWindowsTest, KeepsAttributes)
{
    PutFile(Path("a"), "old");
    constexpr DWORD Attributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;
    ASSERT_TRUE(::SetFileAttributesW(SystemPath(Path("a")).c_str(), Attributes));
    WriteFileAtomically(Path("a"), "new");
    EXPECT_EQ(::GetFileAttributesW(SystemPath(Path("a")).c_str()), Attributes);
    EXPECT_EQ(FolderContent(Path("")), (TFolderContent { { "a", "new" } }));
}

TEST_F(StagedFileWindowsTest, RefusesAFileInUseBeforeAndAfterStaging)
{
    PutFile(Path("a"), "old");
    TStagedFile staged(Path("a"), "new");
    {
        const TOpenFile open(Path("a"), FILE_SHARE_READ | FILE_SHARE_WRITE);
        for (const std::string& text :
            { ErrorOf([&] { WriteFileAtomically(Path("a"), "other"); }), ErrorOf([&] { staged.Commit(); }) })
            EXPECT_THAT(text,
                ::testing::AllOf(::testing::StartsWith("Cannot write " + Path("a").toStdString() + ": "),
                    ::testing::Not(::testing::EndsWith(": ")), ::testing::Not(::testing::EndsWith("."))));
        EXPECT_EQ(FileBytes(Path("a")), "old");
    }
    staged.Commit(); // the staged file is still there
    EXPECT_EQ(FolderContent(Path("")), (TFolderContent { { "a", "new" } }));
}

TEST_F(StagedFileWindowsTest, WaitsForAFileThatIsInUseForAMoment)
{
    PutFile(Path("a"), "old");
    auto open = std::make_unique<TOpenFile>(Path("a"));
    std::thread scanner([&open] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        open.reset();
    });
    WriteFileAtomically(Path("a"), "new");
    scanner.join();
    EXPECT_EQ(FolderContent(Path("")), (TFolderContent { { "a", "new" } }));
}

TEST_F(StagedFileWindowsTest, TakesEveryLengthAroundTheClassicLimit)
{
    for (int length = 240; length <= 260; ++length) {
        const QString path = Path(QString(length + 1 - Path("n").size(), u'n'));
        ASSERT_EQ(path.size(), length);
        WriteFileAtomically(path, "new");
        WriteFileAtomically(path, "newer"); // both calls use a longer name for a moment
        EXPECT_EQ(FileBytes(path), "newer") << length;
        EXPECT_THAT(SystemPath(path), ::testing::StartsWith(L"\\\\?\\"));
    }
    EXPECT_EQ(FolderContent(Path("")).size(), 21U);
}

TEST_F(StagedFileWindowsTest, DropsWhatTheSystemDropsAtTheEnd)
{
    CreateFolder(AbsolutePath(Path("Out. ")));
    EXPECT_EQ(QDir(Path(".")).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList("Out"));
    for (const char* path : { "C:\\Out", "C:\\Out ", "C:/Out..", "C:\\Out\\", "C:\\x\\..\\Out ." })
        EXPECT_EQ(AbsolutePath(path), "C:\\Out") << path;
    EXPECT_EQ(AbsolutePath("C:\\"), "C:\\");
    EXPECT_EQ(AbsolutePath("C:\\ "), "C:\\");
}

TEST_F(StagedFileWindowsTest, TakesPathsOfAnyLengthAndOtherSpellings)
{
    const QString folder = Path(u"Größe/%1/%1/%1"_s.arg(QString(120, u'ö')));
    CreateFolder(folder);
    CreateFolder(folder); // the folder exists already
    const QString file = folder + u"/.\\..\\%1/datei"_s.arg(QString(120, u'ö'));
    WriteFileAtomically(file, "new");
    WriteFileAtomically(file, "newer");
    EXPECT_EQ(FileBytes(folder + "/datei"), "newer");
    EXPECT_GT(AbsolutePath(folder).size(), 300);
    EXPECT_EQ(SystemPath(folder).substr(0, 7), L"\\\\?\\" + AbsolutePath(folder).left(3).toStdWString());
}

#include "base/Files.h"
#include "project/ProjectUpdater.h"
#include "store/ProjectStore.h"
#include "tests/Testing.h"

#include <QFile>

#include <unistd.h>

#include <functional>

using namespace Corvadine;
using namespace Corvadine::Testing;

static std::function<void()> OnSync; // called before each sync of this program

// Replaces the system's function in this program.
extern "C" int fsync(int descriptor) // NOLINT(*-naming)
{
    if (OnSync)
        OnSync();
    return ::fdatasync(descriptor);
}

namespace {

const QByteArray Ours = "<Project><PropertyGroup><Logo>Old</Logo></PropertyGroup></Project>";
const QByteArray Theirs = "<Project><PropertyGroup><Logo>Saved meanwhile</Logo></PropertyGroup></Project>";

} // namespace

// Another program saves the project file during a sync. A sync takes long, so this can happen to a user.
class ForeignSavePosixTest : public TFolderTest {
protected:
    ForeignSavePosixTest()
    {
        const TProjectStore made(Path("Corvadine.db"));
        PutFile(Path("out/logo.png"), "image");
    }
    ~ForeignSavePosixTest() override { OnSync = nullptr; }

    // Runs `prepare` and `work` again and again. In the first run, another program saves during the first
    // sync. In each further run, it saves one sync later. Returns how many runs noticed the save in time.
    int ConflictsOf(const std::function<void()>& prepare, const std::function<void()>& work)
    {
        int conflicts = 0;
        bool hasSaved = true;
        for (int at = 1; hasSaved; ++at) {
            prepare();
            hasSaved = false;
            int left = at;
            OnSync = [&] {
                if (--left != 0)
                    return;
                PutFile(FFile, Theirs);
                hasSaved = true;
            };
            try {
                work();
            } catch (const TError& error) {
                EXPECT_EQ(error.Kind(), TErrorKind::Conflict) << error.what();
                ++conflicts;
            }
            OnSync = nullptr;
            EXPECT_EQ(FileBytes(FFile) == Theirs, hasSaved) << "at sync " << at;
        }
        return conflicts;
    }

    const QString FFile = Path("Demo.dproj");
    TBackups FBackups { Path("Backups"), Path("Corvadine.db") };
};

TEST_F(ForeignSavePosixTest, AnUpdateReplacesNothingThatItHasNotRead)
{
    const TProjectImages images { FFile, Path("out"), { { "Logo", "logo.png" } } };
    for (const TBackupPolicy policy : { TBackupPolicy::Required, TBackupPolicy::BestEffort })
        EXPECT_GT(
            ConflictsOf([this] { PutFile(FFile, Ours); },
                [&] {
                    UpdateProject(images, { FBackups, QDateTime({ 2024, 3, 5 }, { 12, 0, 0 }), policy });
                }),
            0);
}

TEST_F(ForeignSavePosixTest, ARestoreReplacesNothingThatItHasNotKept)
{
    const QDateTime noon({ 2024, 3, 5 }, { 12, 0, 0 });
    FBackups.Keep(FFile, "<Project/>", noon, TBackupReason::Update);
    const auto restore = [&] { FBackups.Restore(FFile, { .Now = noon.addSecs(60) }); };
    EXPECT_GT(ConflictsOf([this] { PutFile(FFile, Ours); }, restore), 0);
    EXPECT_GT(ConflictsOf([this] { QFile::remove(FFile); }, restore), 0) << "of a file that was gone";
}

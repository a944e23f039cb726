#include "generate/GenerationRun.h"

#include "generate/OutputCheck.h"
#include "generate/OutputPlan.h"
#include "generate/WorkQueue.h"
#include "tests/ImageTesting.h"
#include "tests/Testing.h"
#include "tests/TestingSystem.h"

#include <QDir>
#include <QImage>

#include <atomic>
#include <filesystem>

using namespace Corvadine;
using namespace Corvadine::Testing;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

class GenerationRunTest : public TFolderTest {
protected:
    void SetUp() override
    {
        const QImage icon = Painted({ 300, 300 }, QImage::Format_ARGB32,
            [](int x, int y) { return qRgba(x % 256, y % 256, (x * y) % 256, x < 60 ? 0 : 255); });
        ASSERT_TRUE(icon.save(Path("icon.png")));
        ASSERT_TRUE(icon.convertToFormat(QImage::Format_RGB32).scaled(200, 400).save(Path("launch.png")));
        FJob.IconFile = Path("icon.png");
        FJob.LaunchFile = Path("launch.png");
        FJob.Platforms = { true, true, true, true };
        FJob.Options.Format = TOutputFormat::TrueColor;
        FJob.TwoxSize = 60;
        FJob.OutputFolder = Path("new/out");
    }

    std::string RunError() const
    {
        return ErrorOf([this] { RunGeneration(FJob); });
    }
    TFolderContent Outputs() const { return FolderContent(FJob.OutputFolder); }

    // Returns the findings of a check. A finding about an existing file has the word "damaged" or "stale".
    std::string Findings(TCheckDepth depth = TCheckDepth::Pixels) const
    {
        QStringList texts;
        for (const auto& [id, path, fault] : CheckOutputs(FJob, depth).Findings)
            texts.append(id
                + (fault.Kind == TFaultKind::Damaged      ? " damaged: "
                        : fault.Kind == TFaultKind::Stale ? " stale: "
                                                          : ": ")
                + fault.Text);
        return texts.join("; ").toStdString();
    }

    TGenJob FJob;
};

TEST_F(GenerationRunTest, WritesTheSameBytesOnAnyNumberOfThreads)
{
    for (const TOutputFormat format : { TOutputFormat::TrueColor, TOutputFormat::Colors256 }) {
        FJob.Options.Format = format;
        std::pair<int, int> progress;
        const auto list = RunGeneration(FJob, 1, [&](int done, int of) { progress = { done, of }; });
        EXPECT_EQ(list.back().ID, "Icon_MainIcon");
        EXPECT_EQ(progress, std::pair(38, 38));
        const auto first = Outputs();
        EXPECT_EQ(first.size(), 38U);
        EXPECT_EQ(Findings(), "");
        RunGeneration(FJob, 5);
        EXPECT_EQ(Outputs(), first);
    }
}

TEST_F(GenerationRunTest, FailureChangesNothingAndLeavesNoFolder)
{
    PutFile(Path("launch.png"), FileBytes(Path("launch.png")).chopped(100));
    EXPECT_THAT(RunError(), HasSubstr("launch.png: it is damaged"));
    EXPECT_FALSE(QDir(Path("new")).exists());

    FJob.LaunchFile.clear();
    RunGeneration(FJob);
    PutFile(Path("new/out/notes.txt"), "mine");
    const auto before = Outputs();
    FJob.Options.Background = { 1, 2, 3 };
    ASSERT_TRUE(QFile::setPermissions(Path("new/out/UWP_DelphiLogo150.png"), QFile::ReadOwner));
    EXPECT_THAT(RunError(), HasSubstr("UWP_DelphiLogo150.png: the file is read-only"));
    EXPECT_EQ(Outputs(), before) << "files that came first were replaced, or staged ones left";

    FJob.OutputFolder = Path("icon.png");
    EXPECT_THAT(RunError(), HasSubstr("a file of that name is in the way"));
    FJob.OutputFolder.clear();
    EXPECT_EQ(RunError(), "Cannot generate: the project has no output folder");
}

TEST_F(GenerationRunTest, WithoutSourcesTheOutputsAreWhite)
{
    FJob.IconFile.clear();
    FJob.LaunchFile.clear();
    FJob.Options.Background = { 9, 9, 9 };
    RunGeneration(FJob);
    const QImage icon(Path("new/out/Android_LauncherIcon36.png"));
    EXPECT_EQ(icon.size(), QSize(36, 36));
    EXPECT_EQ(icon.pixel(0, 0), qRgb(255, 255, 255));
    const QImage splash(Path("new/out/Android_SplashImage426.png"));
    EXPECT_EQ(splash.pixel(213, 160), qRgb(255, 255, 255));
    EXPECT_EQ(splash.pixel(0, 0), qRgb(9, 9, 9));
    EXPECT_EQ(QImage(Path("new/out/iPhone_Launch2x.png")).size(), QSize(60, 60));
    EXPECT_EQ(Findings(), "");
}

TEST_F(GenerationRunTest, TheListTellsSourcesAndWhichOutputsAreTheSame)
{
    FJob.TwoxSize = 512; // the size of the Windows icon's largest image; twice this is the App Store's size
    for (const int launchWidth : { 0, 1, 100 }) { // 0: no launch image; 1: as good as none
        const auto launch = launchWidth > 0 ? std::optional(QSize(launchWidth, launchWidth)) : std::nullopt;
        const auto outputs = OutputsOf(FJob, { { 64, 64 }, launch });
        const auto output = [&](const QString& id) { return *std::ranges::find(outputs, id, &TOutput::ID); };
        const auto sameAs = [&](const char* id) { return outputs[output(id).SameAs].ID; };
        EXPECT_EQ(output("iPad_Launch2x").FromLaunch, launchWidth > 1);
        EXPECT_EQ(output("Android_SplashImage426").FromLaunch, launchWidth > 1);
        EXPECT_FALSE(output("Android_LauncherIcon36").FromLaunch);
        EXPECT_EQ(sameAs("iPhone_LaunchDark2x"), "iPhone_Launch2x");
        EXPECT_EQ(sameAs("iPad_LaunchDark2x"), "iPhone_Launch3x");
        EXPECT_EQ(sameAs("Android_NotificationIcon36"), "Android_LauncherIcon36");
        EXPECT_EQ(sameAs("iPhone_Launch3x"), "iPhone_Launch3x") << "not the App Store's, which is opaque";
        EXPECT_EQ(sameAs("Icon_MainIcon"), "Icon_MainIcon");
    }
}

TEST_F(GenerationRunTest, CheckFindsEachKindOfDamage)
{
    RunGeneration(FJob);
    const QDir out(FJob.OutputFolder);
    QFile::remove(out.filePath("Android_LauncherIcon36.png"));
    PutFile(
        out.filePath("Android_LauncherIcon48.png"), FileBytes(out.filePath("Android_LauncherIcon96.png")));
    ASSERT_TRUE(QFile::resize(out.filePath("Android_LauncherIcon72.png"), 1000));
    ASSERT_TRUE(QImage(Path("icon.png")).scaled(1024, 1024).save(out.filePath("iOS_AppStore1024.png")));
    ASSERT_TRUE(QImage(150, 150, QImage::Format_RGB32).save(out.filePath("UWP_DelphiLogo150.png"), "BMP"));
    const QString icon = out.filePath("Icon_MainIcon.ico");
    PutFile(icon, FileBytes(icon).replace(4, 1, "\x09"));
    for (const TCheckDepth depth : { TCheckDepth::Form, TCheckDepth::Pixels })
        EXPECT_THAT(Findings(depth),
            Matches("Android_LauncherIcon36: the file does not exist; "
                    "Android_LauncherIcon48 stale: it has 96 x 96 pixels instead of 48 x 48; "
                    "Android_LauncherIcon72 damaged: it is damaged or truncated .*; "
                    "UWP_DelphiLogo150 damaged: it is not a PNG file; "
                    "iOS_AppStore1024 stale: it has color type 6 with 8 bits instead of color type 2 with 8 "
                    "bits; "
                    "Icon_MainIcon damaged: it holds 9 images instead of 10"));
}

TEST_F(GenerationRunTest, CheckComparesPixelsWithThoseOfARun)
{
    FJob.Platforms = { .Windows = true };
    const QString logo = Path("new/out/UWP_DelphiLogo44.png");
    for (const TOutputFormat format : { TOutputFormat::TrueColor, TOutputFormat::Colors256 }) {
        FJob.Options.Format = format;
        FJob.Options.Compression = 1;
        RunGeneration(FJob);
        FJob.Options.Compression = 9;
        EXPECT_EQ(Findings(), "") << "only the compression is another one";

        const QByteArray right = FileBytes(logo);
        PutFile(logo, right.chopped(1));
        EXPECT_EQ(Findings(), "UWP_DelphiLogo44 damaged: the file is truncated");
        EXPECT_EQ(Findings(TCheckDepth::Form), Findings());
        QImage image(logo);
        if (format == TOutputFormat::TrueColor) {
            image.setPixel(30, 9, image.pixel(30, 9) ^ 128U);
            ASSERT_TRUE(image.save(logo));
            EXPECT_EQ(Findings(),
                "UWP_DelphiLogo44 stale: 1 of its 1936 pixels differ from what a run would "
                "write, by up to 128 of 255");
        }
        image.fill(image.pixel(40, 40));
        ASSERT_TRUE(image.save(logo));
        EXPECT_THAT(Findings(), Matches("UWP_DelphiLogo44 stale: [0-9]+ of its 1936 pixels differ .*"));
        EXPECT_EQ(Findings(TCheckDepth::Form), "");
        PutFile(logo, right);
    }

    FJob.Options.Filter = TResampleFilter::rfBell;
    EXPECT_THAT(Findings(),
        Matches("UWP_DelphiLogo44 stale: .*; UWP_DelphiLogo150 stale: .*; Icon_MainIcon "
                "stale: in its image of 16 x 16 pixels, [0-9]+ of its 256 pixels .*"));
    FJob.Platforms = { .Android = true };
    FJob.Options.Format = TOutputFormat::TrueColor;
    RunGeneration(FJob);
    FJob.Options.Background = { 1, 2, 3 };
    EXPECT_THAT(Findings(), Matches("Android_SplashImage426 stale: (?:(?!Launcher|Notification).)*"));
}

TEST_F(GenerationRunTest, CheckLooksIntoTheWindowsIcon)
{
    FJob.Platforms = { .Windows = true };
    RunGeneration(FJob);
    const QString path = Path("new/out/Icon_MainIcon.ico");
    const QByteArray right = FileBytes(path);
    constexpr qsizetype FirstImage = 6 + 10 * 16;
    constexpr qsizetype FirstMask = FirstImage + 40 + 16 * 16 * 4;
    PutFile(path, QByteArray(right).replace(FirstMask, 16 * 4, QByteArray(16 * 4, '\0')));
    EXPECT_EQ(Findings(),
        "Icon_MainIcon damaged: the header or the mask of its image of 16 x 16 pixels is "
        "missing or wrong");
    QByteArray pixel = right;
    pixel[FirstImage + 40 + 16 * 4 - 3] = static_cast<char>(~pixel[FirstImage + 40 + 16 * 4 - 3]);
    PutFile(path, pixel);
    EXPECT_THAT(Findings(),
        HasSubstr("Icon_MainIcon stale: in its image of 16 x 16 pixels, 1 of its 256 pixels differ"));
    EXPECT_EQ(Findings(TCheckDepth::Form), "");
    for (const QByteArray& cut : { right.chopped(1), right.left(FirstMask), right.left(20) }) {
        PutFile(path, cut);
        EXPECT_EQ(Findings(), "Icon_MainIcon damaged: the file is truncated");
    }
}

TEST_F(GenerationRunTest, CheckWithoutASourceTellsWhatItCouldNotCompare)
{
    RunGeneration(FJob);
    FJob.Options.Filter = TResampleFilter::rfBell; // all images are stale
    const TOutputCheck whole = CheckOutputs(FJob);
    EXPECT_EQ(whole.Findings.size(), 38U);
    EXPECT_EQ(whole.ComparedCount, 38);

    QFile::remove(FJob.LaunchFile);
    TOutputCheck check = CheckOutputs(FJob);
    ASSERT_EQ(check.UnreadableSources.size(), 1U);
    EXPECT_EQ(check.UnreadableSources[0].Name, "launch");
    EXPECT_EQ(check.UnreadableSources[0].Reason, "the file does not exist");
    EXPECT_EQ(check.UnreadableSources[0].OutputCount, 10);
    EXPECT_EQ(check.ComparedCount, 28);
    EXPECT_EQ(check.Findings.size(), 28U);

    PutFile(FJob.IconFile, FileBytes(FJob.IconFile).chopped(100)); // the header with the size is left
    ASSERT_TRUE(QFile::resize(Path("new/out/Android_SplashImage426.png"), 1000));
    ASSERT_TRUE(QImage(9, 9, QImage::Format_ARGB32).save(Path("new/out/Android_LauncherIcon36.png")));
    check = CheckOutputs(FJob);
    EXPECT_EQ(check.UnreadableSources.size(), 2U);
    EXPECT_EQ(check.ComparedCount, 0);
    EXPECT_THAT(Findings(),
        Matches("Android_LauncherIcon36 stale: it has 9 x 9 pixels .*; "
                "Android_SplashImage426 damaged: [^;]*"));
}

TEST_F(GenerationRunTest, RefusesOutputsThatAreTooLargeBeforeItDecodes)
{
    FJob.TwoxSize = 8192; // the launch image of 200 x 400 pixels then gives 8192 x 4096 pixels
    EXPECT_EQ(PlanOutputs(FJob).Outputs.size(), 38U) << "just small enough";
    FJob.TwoxSize = 8193;
    const std::string refusal =
        "Cannot render iPhone_Launch3x: it would have 16386 x 8192 pixels, which take 513 MiB, and the limit "
        "is 512 MiB; its height follows from its width and the shape of the launch image, 200 x 400 pixels";
    EXPECT_EQ(ErrorOf([&] { PlanOutputs(FJob); }), refusal);
    PutFile(FJob.IconFile, FileBytes(FJob.IconFile).chopped(100)); // damage that only decoding finds
    EXPECT_EQ(RunError(), refusal);

    // The image has more bytes than a number of 64 bits can count.
    FJob.Platforms = { .IPad = true };
    FJob.TwoxSize = 2'000'000'000;
    ASSERT_TRUE(QImage(2, 2, QImage::Format_RGB32).save(FJob.LaunchFile));
    EXPECT_THAT(RunError(), HasSubstr("2147483646 x 2147483646 pixels, which take 17592186011649 MiB"));
}

TEST_F(GenerationRunTest, RefusesToOverwriteASource)
{
    const QByteArray icon = FileBytes(FJob.IconFile);
    const auto expectRefusal = [&](const QString& source, const std::string& output) {
        FJob.IconFile = source;
        const auto before = FolderContent(Path(""));
        const std::string refusal = "Cannot generate " + Path("new/out/").toStdString() + output
            + ": this would overwrite the icon image " + source.toStdString();
        EXPECT_EQ(RunError(), refusal);
        EXPECT_EQ(ErrorOf([this] { PlanOutputs(FJob); }), refusal);
        EXPECT_EQ(FolderContent(Path("")), before);
    };
    PutFile(Path("new/out/iOS_AppStore1024.png"), icon);
    expectRefusal(Path("new/out/iOS_AppStore1024.png"), "iOS_AppStore1024.png");
    expectRefusal(Path("new/out/../../new/out/iOS_AppStore1024.png"), "iOS_AppStore1024.png");
    std::filesystem::create_hard_link(
        Path("new/out/iOS_AppStore1024.png").toStdString(), Path("twin.png").toStdString());
    expectRefusal(Path("twin.png"), "iOS_AppStore1024.png");
    PutFile(Path("new/out/Icon_MainIcon.ico"), icon);
    expectRefusal(Path("new/out/Icon_MainIcon.ico"), "Icon_MainIcon.ico");
    if (IsPosix()) {
        ASSERT_TRUE(QFile::link("Icon_MainIcon.ico", Path("new/out/UWP_DelphiLogo44.png")));
        expectRefusal(Path("new/out/Icon_MainIcon.ico"), "UWP_DelphiLogo44.png");
        ASSERT_TRUE(QFile::link(Path("new"), Path("link")));
        expectRefusal(Path("link/out/iOS_AppStore1024.png"), "iOS_AppStore1024.png");
    }

    FJob.IconFile = Path("icon.png");
    FJob.LaunchFile = Path("new/out/iPhone_Launch2x.png");
    PutFile(FJob.LaunchFile, FileBytes(Path("launch.png")));
    EXPECT_THAT(RunError(), HasSubstr("this would overwrite the launch image "));
    FJob.Platforms = { .Android = true };
    EXPECT_EQ(RunGeneration(FJob).size(), 15U) << "no output has the name of a source";
}

TEST_F(GenerationRunTest, PlanWarnsOfSourcesThatDoNotFit)
{
    const TOutputPlan plan = PlanOutputs(FJob);
    EXPECT_EQ(plan.Outputs[6].Path, Path("new/out/Android_SplashImage426.png"));
    EXPECT_EQ(plan.Outputs[37].Recipe.Canvas, QSize(512, 512));
    EXPECT_THAT(plan.Warnings,
        ElementsAre("The icon image has 300 x 300 pixels; iOS_AppStore1024 enlarges it 3.41 times, to 1024 x "
                    "1024",
            "The launch image has 200 x 400 pixels; Android_SplashImage960 enlarges it 1.80 times, to 360 x "
            "720"));
    EXPECT_FALSE(QDir(Path("new")).exists());

    std::swap(FJob.IconFile, FJob.LaunchFile);
    FJob.Platforms = { .Windows = true };
    EXPECT_THAT(PlanOutputs(FJob).Warnings,
        ElementsAre(
            "The icon image has 200 x 400 pixels; it is not square, and so its outputs are not either",
            "The icon image has 200 x 400 pixels; Icon_MainIcon enlarges it 1.28 times, to 256 x 512",
            "The launch image is transparent; the background color will show through"));
    FJob.Platforms = {};
    EXPECT_THAT(
        PlanOutputs(FJob).Warnings, ElementsAre("No platform is ticked, so there is nothing to generate"));
}

TEST(WorkQueueTest, RunsAllInOrderOfNeedAndStopsAtTheFirstFailure)
{
    for (const int workers : { 1, 2, 8 }) {
        std::atomic<int> made { 0 };
        std::vector<TTask> tasks { { [&] { made = 1; } } };
        for (int i = 0; i < 50; ++i)
            tasks.push_back({ [&] { made += made.load() > 0 ? 1 : 1000; }, 0 });
        RunTasks(tasks, workers);
        EXPECT_EQ(made, 51);

        tasks[20].Run = [] { throw TError(TErrorKind::Io, u"no"_s); };
        EXPECT_EQ(ErrorOf([&] { RunTasks(tasks, workers); }), "no");
        EXPECT_LT(made, 51);
    }
}

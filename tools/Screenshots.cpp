// Takes the pictures of the window that the documents show.
// usage: Screenshots SAMPLE_FOLDER OUTPUT_FOLDER SUFFIX   (scale and theme come from the environment)

#include "app/MainFrm.h"
#include "app/ProjectLookup.h"
#include "base/Literals.h"
#include "dialogs/AddProjFrm.h"
#include "dialogs/ImageDlgFrm.h"
#include "project/ProjectPaths.h"
#include "support/update/UpdateEngine.h"
#include "support/update/UpdateWizard.h"
#include "tools/SilentPrompts.h"
#include "widgets/Ribbon.h"
#include "widgets/ShellListView.h"
#include "widgets/Theme.h"

#include <QApplication>
#include <QDir>
#include <QProgressBar>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>

using namespace Corvadine;

namespace {

class TPhotographer {
public:
    TPhotographer(QString folder, QString suffix) : FFolder(std::move(folder)), FSuffix(std::move(suffix)) { }

    // Shows the widget, lets the event loop idle, and takes the picture. Only while the event loop idles, the
    // widget is painted and its enabling rules are evaluated.
    void Take(QWidget& widget, const char* name) const
    {
        widget.show();
        LetIdle();
        TakeNow(widget, name);
    }

    static void LetIdle()
    {
        QEventLoop loop;
        QTimer::singleShot(300, &loop, &QEventLoop::quit);
        loop.exec();
    }

    void TakeNow(QWidget& widget, const char* name) const
    {
        const QString path = u"%1/%2%3.png"_s.arg(FFolder, QLatin1String(name), FSuffix);
        if (!widget.grab().save(path))
            std::cerr << "cannot write " << path.toStdString() << '\n';
    }

private:
    QString FFolder;
    QString FSuffix;
};

// Copies the sample project with its two pictures, and adds the project to the database in `folder`.
void AddSample(const QString& folder, const QString& sample)
{
    const QString home = folder + "/Demo";
    const QString project = home + "/Demo.dproj";
    QDir().mkpath(home);
    for (const QString& name : QDir(sample).entryList(QDir::Files))
        QFile::copy(sample + "/" + name, home + "/" + name);
    TProjectStore store(folder + "/Corvadine.db");
    TProjectsTable table;
    table.Open(store);
    table.Append();
    table.SetField(TField::ProjectFile, project);
    table.SetField(TField::OutputFolder, DeriveOutputFolder(project));
    table.SetField(TField::IconImageName, QString(home + "/icon.png"));
    table.SetField(TField::SplashImageName, QString(home + "/launch.png"));
    table.SetField(TField::PixelFormat, 2);
    table.SetField(TField::PickColor, 0x8A1E5A);
    table.Post();
}

// Reports an update without asking a server.
class TFoundUpdate : public TUpdateEngine {
public:
    explicit TFoundUpdate(const QString& programFolder)
        : TUpdateEngine(LoadUpdateSettings(TUpdateFolder(programFolder)))
    {
    }

    void Check() override
    {
        const auto file = [](const char* target, qint64 size, const char* description, bool isMandatory) {
            TUpdateFile made;
            made.Target = target;
            made.Version = "1.2.0";
            made.Date = QDateTime(QDate(2026, 11, 22), QTime(14, 30), Qt::UTC);
            made.Size = size;
            made.Description = description;
            made.Mandatory = isMandatory;
            return made;
        };
        emit Checked({ file("corvadine", 2'950'000, "The newest catalogue of Android icons.", true),
            file("Corvadine.chm", 1'240'000, "", true),
            file("samples/Demo/launch.png", 310'000, "", false) });
    }
};

void TakeUpdateWizard(const TPhotographer& photographer, QWidget& form, const QString& programFolder)
{
    TFoundUpdate update(programFolder);
    TUpdateWizard wizard({ update, {}, [] {} }, &form);
    photographer.Take(wizard, "update");
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    if (argc != 4) {
        std::cerr << "usage: Screenshots SAMPLE_FOLDER OUTPUT_FOLDER SUFFIX\n";
        return 2;
    }
    ApplyTheme(application);
    const QString sample = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    const TPhotographer photographer(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    TSilentPrompts prompts;
    const QSize clientArea(1024, 729);
    const QTemporaryDir emptyFolder;
    {
        TMainForm form(emptyFolder.path(), prompts);
        form.StartUp();
        form.resize(clientArea);
        photographer.Take(form, "empty");
    }

    // The pictures show the name of this folder, so the name must be short and always the same.
    const QString program = QDir::temp().filePath("FMX");
    const auto removeProgram = qScopeGuard([&program] { QDir(program).removeRecursively(); });
    AddSample(program, sample);
    TMainForm form(program, prompts);
    form.StartUp();
    form.resize(clientArea);
    form.Controls().cbProjects->SetValue(form.tblProjects().Current().ID);
    form.show();
    photographer.LetIdle();
    QObject::connect(form.Controls().PB, &QProgressBar::valueChanged, &form, [&](int value) {
        if (value == form.Controls().PB->maximum() / 2)
            photographer.TakeNow(form, "running");
    });
    for (QToolButton* button : form.Controls().dxRibbon1->findChildren<QToolButton*>())
        if (button->defaultAction() != nullptr && button->defaultAction()->text().remove(u'&') == u"Generate")
            button->click();
    photographer.Take(form, "main");

    TAddProjForm addProject(&form, program + "/Demo");
    photographer.Take(addProject, "add-project");
    TImageDlgForm picker(&form, program + "/Demo");
    picker.show();
    photographer.LetIdle();
    picker.cxShellListView1->setCurrentIndex(picker.cxShellListView1->model()->index(1, 0)); // icon.png
    photographer.Take(picker, "image-picker");
    picker.hide();
    TakeUpdateWizard(photographer, form, program);
    return 0;
}

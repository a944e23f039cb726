// Takes the pictures of the window that the documents show.
// usage: Screenshots SAMPLE_FOLDER OUTPUT_FOLDER SUFFIX   (scale and theme come from the environment)

#include "app/MainFrm.h"
#include "app/ProjectLookup.h"
#include "app/Ribbon.h"
#include "app/Theme.h"
#include "dialogs/AddProjFrm.h"
#include "dialogs/ImageDlgFrm.h"
#include "project/ProjectPaths.h"
#include "tools/SilentPrompts.h"

#include <QApplication>
#include <QDir>
#include <QProgressBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>

using namespace Corvadine;

namespace {

class TPhotographer {
public:
    TPhotographer(QString folder, QString suffix) : FFolder(std::move(folder)), FSuffix(std::move(suffix)) { }

    void Take(QWidget& widget, const char* name) const
    {
        widget.show();
        for (int round = 0; round < 50; ++round)
            QApplication::processEvents(QEventLoop::AllEvents, 20);
        TakeNow(widget, name);
    }

    void TakeNow(QWidget& widget, const char* name) const
    {
        const QString path = QStringLiteral("%1/%2%3.png").arg(FFolder, QLatin1String(name), FSuffix);
        if (!widget.grab().save(path))
            std::cerr << "cannot write " << path.toStdString() << '\n';
    }

private:
    QString FFolder;
    QString FSuffix;
};

void AddSample(TProjectsTable& table, const QString& sample, const QString& project)
{
    table.Append();
    table.SetField(TField::ProjectFile, project);
    table.SetField(TField::OutputFolder, DeriveOutputFolder(project));
    table.SetField(TField::IconImageName, QString(sample + "/icon.png"));
    table.SetField(TField::SplashImageName, QString(sample + "/launch.png"));
    table.SetField(TField::PixelFormat, 2);
    table.SetField(TField::PickColor, 0x8A1E5A);
    table.Post();
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
    const QTemporaryDir program;
    QDir().mkpath(program.filePath("Demo"));
    QFile::copy(sample + "/Demo.dproj", program.filePath("Demo/Demo.dproj"));

    TSilentPrompts prompts;
    TMainForm form(program.path(), prompts);
    form.StartUp();
    form.resize(1024, 740);
    photographer.Take(form, "empty");

    AddSample(form.tblProjects(), sample, program.filePath("Demo/Demo.dproj"));
    form.Controls().cbProjects->SetValue(form.tblProjects().Current().ID);
    QObject::connect(form.Controls().PB, &QProgressBar::valueChanged, &form, [&](int value) {
        if (value == form.Controls().PB->maximum() / 2)
            photographer.TakeNow(form, "running");
    });
    for (int round = 0; round < 20; ++round)
        QApplication::processEvents(QEventLoop::AllEvents, 20);
    for (QToolButton* button : form.Controls().dxRibbon1->findChildren<QToolButton*>())
        if (button->defaultAction() != nullptr && button->defaultAction()->text().contains("enerate"))
            button->click();
    photographer.Take(form, "main");

    TAddProjForm addProject(&form, sample);
    photographer.Take(addProject, "add-project");
    TImageDlgForm picker(&form, sample);
    photographer.Take(picker, "image-picker");
    return 0;
}

#include "app/OlderSettings.h"

#include "app/SettingsFile.h"
#include "store/ProjectsTable.h"

namespace Corvadine {

namespace {

// Returns `text` without the blanks and control characters at both ends.
QString Trimmed(const QString& text)
{
    qsizetype first = 0;
    qsizetype end = text.size();
    while (first < end && text[first] <= u' ')
        ++first;
    while (end > first && text[end - 1] <= u' ')
        --end;
    return text.mid(first, end - first);
}

} // namespace

void AppendOlderProject(TProjectsTable& table, const TSettingsFile& settings)
{
    constexpr int InvalidColor = -1; // "no color", the default of the older release
    table.Append();
    table.SetField(TField::ProjectFile, Trimmed(settings.Text("ProjectFile")));
    table.SetField(TField::IconImageName, settings.Text("BaseImage"));
    table.SetField(TField::SplashImageName, settings.Text("SplashImage"));
    table.SetField(TField::OutputFolder, Trimmed(settings.Text("OutputFolder")));
    table.SetField(TField::IncAndroid, settings.Boolean("IncAndroid", true));
    table.SetField(TField::IncIPhone, settings.Boolean("IncIPhone", true));
    table.SetField(TField::IncIPad, settings.Boolean("IncIPad", true));
    table.SetField(TField::IncWindows, settings.Boolean("IncWindows", true));
    table.SetField(TField::TwoxSize, settings.Integer("2xSize", 400));
    table.SetField(TField::PickColor, settings.Integer("PickColor", InvalidColor));
    table.SetField(TField::PixelFormat, settings.Integer("PixelFormat", 1));
    table.SetField(TField::Compression, settings.Integer("Compression", 6));
}

} // namespace Corvadine

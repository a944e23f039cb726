#include "cli/Settings.h"

#include "base/Color.h"
#include "base/Error.h"
#include "base/Files.h"
#include "cli/CliOutput.h"
#include "cli/Options.h"
#include "generate/RenderSources.h"
#include "generate/pixels/RenderOptions.h"
#include "store/ProjectsTable.h"

#include <CLI/CLI.hpp>

#include <QJsonArray>

#include <algorithm>
#include <array>

namespace Corvadine {

namespace {

using TFieldValues = std::map<TField, QVariant>;

// One setting: how it is read from the command line, and how it is shown.
struct TSetting {
    const char* Name;
    const char* ValueName;
    const char* Help;
    TFieldValues (*Parse)(const QString& text); // throws TError(Usage)
    QJsonValue (*Value)(const TProject& project);
};

struct TPlatformField {
    const char* Name;
    TField Field;
};

constexpr std::array<TPlatformField, 4> Platforms { { { "android", TField::IncAndroid },
    { "iphone", TField::IncIPhone }, { "ipad", TField::IncIPad }, { "windows", TField::IncWindows } } };

TError NotOneOf(const QString& text, const QStringList& allowed)
{
    return { TErrorKind::Usage, u"'%1' is none of %2"_s.arg(text, allowed.join(", "_L1)) };
}

TFieldValues AllPlatforms(bool isTicked)
{
    TFieldValues values;
    for (const TPlatformField& platform : Platforms)
        values[platform.Field] = isTicked;
    return values;
}

TFieldValues ParsePlatforms(const QString& text)
{
    const QString lower = text.toLower();
    if (lower == "all"_L1 || lower == "none"_L1)
        return AllPlatforms(lower == "all"_L1);
    TFieldValues values = AllPlatforms(false);
    for (const QString& part : lower.split(u',')) {
        const auto found = std::find_if(Platforms.begin(), Platforms.end(),
            [&](const TPlatformField& platform) { return part.trimmed() == QLatin1String(platform.Name); });
        if (found == Platforms.end())
            throw NotOneOf(
                part.trimmed(), { u"android"_s, u"iphone"_s, u"ipad"_s, u"windows"_s, u"all"_s, u"none"_s });
        values[found->Field] = true;
    }
    return values;
}

QJsonValue PlatformsValue(const TProject& project)
{
    QJsonArray names;
    for (const TPlatformField& platform : Platforms)
        if (FieldValue(project, platform.Field).toBool())
            names.append(QString::fromLatin1(platform.Name));
    return names;
}

// Returns `number`, or null if the database has no number.
QJsonValue NumberValue(const std::optional<int>& number)
{
    return number ? QJsonValue(*number) : QJsonValue();
}

// The # may be missing, because shells take an unquoted # for the start of a comment.
TFieldValues ParseBackground(const QString& text)
{
    constexpr int DigitCount = 6;
    const QString digits = text.startsWith(u'#') ? text.mid(1) : text;
    bool isNumber = false;
    const uint rgb = digits.toUInt(&isNumber, 16);
    if (!isNumber || digits.size() != DigitCount || !digits.at(0).isLetterOrNumber())
        throw TError(TErrorKind::Usage, u"'%1' is no color #RRGGBB, such as '#FFFFFF'"_s.arg(text));
    return { { TField::PickColor, TColor::FromRgb(rgb).ToStored() } };
}

QJsonValue BackgroundValue(const TProject& project)
{
    if (!project.PickColor)
        return {};
    const TColor color = TColor::FromStored(*project.PickColor);
    return u"#%1%2%3"_s.arg(color.Red, 2, 16, QLatin1Char('0'))
        .arg(color.Green, 2, 16, QLatin1Char('0'))
        .arg(color.Blue, 2, 16, QLatin1Char('0'))
        .toUpper();
}

TFieldValues ParseFormat(const QString& text)
{
    if (text == "256"_L1)
        return { { TField::PixelFormat, static_cast<int>(TOutputFormat::Colors256) } };
    if (text.toLower() == "true"_L1)
        return { { TField::PixelFormat, static_cast<int>(TOutputFormat::TrueColor) } };
    throw NotOneOf(text, { u"256"_s, u"true"_s });
}

// One number means 256 colors. Every other number means true color. The generation of images reads the
// numbers in the same way.
QJsonValue FormatValue(const TProject& project)
{
    if (!project.PixelFormat)
        return {};
    const bool isPalette = *project.PixelFormat == static_cast<int>(TOutputFormat::Colors256);
    return isPalette ? u"256"_s : u"true"_s;
}

TFieldValues ParseFilter(const QString& text)
{
    QStringList names;
    for (const TFilterInfo& info : FilterInfos()) {
        names.append(QString::fromLatin1(info.Name));
        if (text.toLower() == names.last())
            return { { TField::ResampleFilter, static_cast<int>(info.Filter) } };
    }
    throw NotOneOf(text, names);
}

QJsonValue FilterValue(const TProject& project)
{
    for (const TFilterInfo& info : FilterInfos())
        if (project.ResampleFilter == static_cast<int>(info.Filter))
            return QString::fromLatin1(info.Name);
    return NumberValue(project.ResampleFilter);
}

// An empty text clears the field.
QString ParsePath(const QString& text)
{
    return text.isEmpty() ? QString() : AbsolutePath(text);
}

TFieldValues ParseOutput(const QString& text)
{
    if (text.isEmpty())
        throw TError(TErrorKind::Usage, u"a folder is required"_s);
    return { { TField::OutputFolder, ParsePath(text) } };
}

const std::array<TSetting, 9> Settings { {
    { "icon", "FILE", "Source image of the icons; \"\" for none",
        [](const QString& text) -> TFieldValues {
            return { { TField::IconImageName, ParsePath(text) } };
        },
        [](const TProject& project) -> QJsonValue { return project.IconImageName; } },
    { "launch", "FILE", "Source image of the launch images; \"\" for none",
        [](const QString& text) -> TFieldValues {
            return { { TField::SplashImageName, ParsePath(text) } };
        },
        [](const TProject& project) -> QJsonValue { return project.SplashImageName; } },
    { "platforms", "LIST", "all, none, or some of android,iphone,ipad,windows", ParsePlatforms,
        PlatformsValue },
    { "background", "#RRGGBB", "Color behind transparent pixels and of margins", ParseBackground,
        BackgroundValue },
    { "format", "256|true", "256 colors or true color", ParseFormat, FormatValue },
    { "compression", "1..10", "Compression of the PNG files",
        [](const QString& text) -> TFieldValues {
            return { { TField::Compression,
                ParseNumber(text, CompressionRange.Least, CompressionRange.Most) } };
        },
        [](const TProject& project) { return NumberValue(project.Compression); } },
    { "twox", "PIXELS", "Width of the 2x launch images",
        [](const QString& text) -> TFieldValues {
            return { { TField::TwoxSize, ParseNumber(text, TwoxSizeRange.Least, TwoxSizeRange.Most) } };
        },
        [](const TProject& project) { return NumberValue(project.TwoxSize); } },
    { "filter", "NAME",
        "none, bell, bicubic, bilinear, bspline, fastlinear, hermite,\n"
        "lanczos3, linear, mitchell, nearest or triangle",
        ParseFilter, FilterValue },
    { "output", "DIR", "Folder of the generated images", ParseOutput,
        [](const TProject& project) -> QJsonValue { return project.OutputFolder; } },
} };

QString TypedValue(const QJsonValue& value)
{
    if (value.isNull())
        return u"(not set)"_s;
    if (value.isArray()) {
        const QString list = value.toVariant().toStringList().join(u',');
        return list.isEmpty() ? u"none"_s : list;
    }
    const QString text = value.toVariant().toString();
    return text.isEmpty() ? u"\"\""_s : text;
}

} // namespace

void TSettingsOptions::Declare(CLI::App& app)
{
    for (const TSetting& setting : Settings) {
        const auto take = [this, &setting](const QString& text) {
            for (const auto& [field, value] : setting.Parse(text))
                FValues[field] = value;
        };
        AddTextOption(app, std::string("--") + setting.Name, take, setting.Help)
            ->type_name(setting.ValueName)
            ->group("Settings");
    }
}

void TSettingsOptions::CheckPaths() const
{
    const auto given = [this](TField field) { return Has(field) ? FValues.at(field).toString() : QString(); };
    ReadSourceSizes(given(TField::IconImageName), given(TField::SplashImageName)); // throws
    if (const QString folder = given(TField::OutputFolder); FileExists(folder))
        throw TError(TErrorKind::BadInput, u"use the output folder"_s, folder, u"it is a file"_s);
}

void TSettingsOptions::SetFields(TProjectsTable& table) const
{
    for (const auto& [field, value] : FValues)
        table.SetField(field, value);
}

QJsonObject ProjectJson(const TProject& project)
{
    QJsonObject json { { u"id"_s, static_cast<qint64>(project.ID) }, { u"project"_s, project.ProjectFile } };
    for (const TSetting& setting : Settings)
        json.insert(QLatin1String(setting.Name), setting.Value(project));
    return json;
}

QStringList ProjectLines(const TProject& project)
{
    std::vector<QStringList> rows { { u"id"_s, QString::number(project.ID) },
        { u"project"_s, project.ProjectFile } };
    for (const TSetting& setting : Settings)
        rows.push_back({ QString::fromLatin1(setting.Name), TypedValue(setting.Value(project)) });
    return AlignedRows(rows);
}

} // namespace Corvadine

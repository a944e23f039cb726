#pragma once

#include <QString>
#include <QVariant>

#include <array>
#include <cstdint>
#include <optional>
#include <set>

namespace Corvadine {

// One project: what the user chose for one .dproj file, as one row of the database keeps it. The fields are
// named like their columns. A number is absent where the database holds none, as rows of older releases may;
// what to do then is for whoever uses the number to say. Every member has an initialiser, so that a
// designated initialiser may name just some.
struct TProject {
    std::int64_t ID = 0;        // assigned by the database; 0 = never saved
    QString ProjectFile {};     // full path of the .dproj; no two projects share it
    QString IconImageName {};   // full path of the icon source image; empty = none
    QString SplashImageName {}; // full path of the launch source image; empty = none
    bool IncAndroid = false;
    bool IncIPhone = false;
    bool IncIPad = false;
    bool IncWindows = false;
    std::optional<int> TwoxSize {};       // pixels
    QString OutputFolder {};              // full path, without a trailing delimiter
    std::optional<int> PickColor {};      // background, 0xBBGGRR; -1 = invalid
    std::optional<int> PixelFormat {};    // a TOutputFormat
    std::optional<int> Compression {};    // in CompressionRange
    std::optional<int> ResampleFilter {}; // code of the resampling filter, 0 to 11

    bool operator==(const TProject&) const = default;
};

// The fields by name, for what handles any of them alike: announcements, bound editors, SQL.
enum class TField {
    ID,
    ProjectFile,
    IconImageName,
    SplashImageName,
    IncAndroid,
    IncIPhone,
    IncIPad,
    IncWindows,
    TwoxSize,
    OutputFolder,
    PickColor,
    PixelFormat,
    Compression,
    ResampleFilter,
};

// The values of PixelFormat. Whatever else a row may hold is taken for true colour.
enum class TOutputFormat {
    Colors256 = 1, // 8-bit palette
    TrueColor = 2, // 8 bits per sample, with alpha where the picture keeps it
};

// The values that a bounded number may take, the ends included.
struct TFieldRange {
    int Least;
    int Most;
};

inline constexpr TFieldRange CompressionRange { 1, 10 };
// Which width is too much depends on the shape of the launch source, so that shows only when a run is
// planned; this just keeps the doubled width inside the type.
inline constexpr TFieldRange TwoxSizeRange { 1, 999'999'999 };

using TFieldSet = std::set<TField>;

// Every field, in the order of the columns.
inline constexpr std::array AllFields { TField::ID, TField::ProjectFile, TField::IconImageName,
    TField::SplashImageName, TField::IncAndroid, TField::IncIPhone, TField::IncIPad, TField::IncWindows,
    TField::TwoxSize, TField::OutputFolder, TField::PickColor, TField::PixelFormat, TField::Compression,
    TField::ResampleFilter };

// The name of the column, which is also the name of the record's member.
const char* FieldName(TField field);

// The value of one field: text, bool, integer, or an invalid QVariant for an absent number.
QVariant FieldValue(const TProject& project, TField field);

// Sets one field, converting `value` as QVariant does; a null value empties a text, unticks a bool and makes
// a number absent. Throws TError(Usage) for a number that is none, with the field unchanged.
// REQUIRES: field is not ID.
void SetFieldValue(TProject& project, TField field, const QVariant& value);

// Calls `visitor` with the member that `field` names, an std::int64_t, QString, bool or std::optional<int>,
// const if `project` is.
template <typename TRecord, typename TVisitor>
decltype(auto) VisitField(TRecord& project, TField field, TVisitor&& visitor)
{
    switch (field) {
    case TField::ID:
        return visitor(project.ID);
    case TField::ProjectFile:
        return visitor(project.ProjectFile);
    case TField::IconImageName:
        return visitor(project.IconImageName);
    case TField::SplashImageName:
        return visitor(project.SplashImageName);
    case TField::IncAndroid:
        return visitor(project.IncAndroid);
    case TField::IncIPhone:
        return visitor(project.IncIPhone);
    case TField::IncIPad:
        return visitor(project.IncIPad);
    case TField::IncWindows:
        return visitor(project.IncWindows);
    case TField::TwoxSize:
        return visitor(project.TwoxSize);
    case TField::OutputFolder:
        return visitor(project.OutputFolder);
    case TField::PickColor:
        return visitor(project.PickColor);
    case TField::PixelFormat:
        return visitor(project.PixelFormat);
    case TField::Compression:
        return visitor(project.Compression);
    case TField::ResampleFilter:
        break;
    }
    return visitor(project.ResampleFilter);
}

} // namespace Corvadine

#pragma once

#include <QString>
#include <QVariant>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <variant>

namespace Corvadine {

// One project: what the user chose for one .dproj file, as one row of the database. Fields have the names of
// their columns. A number is absent if its column is NULL, as in rows of older releases. The code that needs
// the number decides what to do then. Every member has an initializer, so that a designated initializer may
// name only some members.
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
    std::optional<int> PixelFormat {};    // 1 = 256 colors, 2 and all others = true color
    std::optional<int> Compression {};    // in CompressionRange
    std::optional<int> ResampleFilter {}; // code of the resampling filter, 0 to 11

    bool operator==(const TProject&) const = default;
};

// Names a field, for code that treats all fields alike: announcements, bound editors, SQL.
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

// The values that a bounded number may take, the ends included.
struct TFieldRange {
    int Least;
    int Most;
};

inline constexpr TFieldRange CompressionRange { 1, 10 };
// The upper limit only prevents an overflow when the width is doubled. The real limit depends on the shape of
// the launch source, and is checked when a run is planned.
inline constexpr TFieldRange TwoxSizeRange { 1, 999'999'999 };

using TFieldSet = std::set<TField>;

// One column of the table Projects.
struct TColumn {
    TField Field;
    const char* Name; // of the column and of the record's member
    const char* Type; // in SQL
    std::variant<std::int64_t TProject::*, QString TProject::*, bool TProject::*,
        std::optional<int> TProject::*>
        Member;
};

// The columns in their order. SQL, reading, writing and comparing follow from this table.
inline constexpr std::array Columns {
    TColumn { TField::ID, "ID", "integer PRIMARY KEY", &TProject::ID },
    TColumn { TField::ProjectFile, "ProjectFile", "VARCHAR(256)", &TProject::ProjectFile },
    TColumn { TField::IconImageName, "IconImageName", "VARCHAR(256)", &TProject::IconImageName },
    TColumn { TField::SplashImageName, "SplashImageName", "VARCHAR(256)", &TProject::SplashImageName },
    TColumn { TField::IncAndroid, "IncAndroid", "BOOLEAN", &TProject::IncAndroid },
    TColumn { TField::IncIPhone, "IncIPhone", "BOOLEAN", &TProject::IncIPhone },
    TColumn { TField::IncIPad, "IncIPad", "BOOLEAN", &TProject::IncIPad },
    TColumn { TField::IncWindows, "IncWindows", "BOOLEAN", &TProject::IncWindows },
    TColumn { TField::TwoxSize, "TwoxSize", "INTEGER", &TProject::TwoxSize },
    TColumn { TField::OutputFolder, "OutputFolder", "VARCHAR(256)", &TProject::OutputFolder },
    TColumn { TField::PickColor, "PickColor", "INTEGER", &TProject::PickColor },
    TColumn { TField::PixelFormat, "PixelFormat", "INTEGER", &TProject::PixelFormat },
    TColumn { TField::Compression, "Compression", "INTEGER", &TProject::Compression },
    TColumn { TField::ResampleFilter, "ResampleFilter", "INTEGER", &TProject::ResampleFilter },
};

constexpr const TColumn& ColumnOf(TField field)
{
    return Columns[static_cast<std::size_t>(field)];
}

static_assert(
    std::ranges::all_of(Columns, [](const TColumn& column) { return &ColumnOf(column.Field) == &column; }));

// Calls `visitor` with the member that `field` names. The member is const if `project` is const.
template <typename TRecord, typename TVisitor>
auto VisitField(TRecord& project, TField field, const TVisitor& visitor)
{
    return std::visit([&](auto member) { return visitor(project.*member); }, ColumnOf(field).Member);
}

// Returns the value of one field: a text, bool or integer, or an invalid QVariant for an absent number.
QVariant FieldValue(const TProject& project, TField field);

// Sets one field, and converts `value` as QVariant does. A null value empties a text, unticks a bool and
// makes a number absent. Throws TError(Usage), with the field unchanged, if the field is a number and `value`
// cannot be converted to an integer. REQUIRES: field is not ID.
void SetFieldValue(TProject& project, TField field, const QVariant& value);

// Whether both rows belong to the same project. The ID alone does not tell, because the database may give the
// ID of a deleted project to a new project.
inline bool IsSameProject(const TProject& project, const TProject& other)
{
    return project.ID == other.ID && project.ProjectFile == other.ProjectFile;
}

// Returns the fields whose values differ.
TFieldSet DifferentFields(const TProject& project, const TProject& other);

} // namespace Corvadine

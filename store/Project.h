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

// One project, as one row of the database keeps it: what the user chose for one .dproj file. The fields have
// the names of their columns. A number is absent where the column is NULL, as in rows of older releases; the
// code that needs the number decides what to do then. Every member has an initializer, so that a designated
// initializer may name only some.
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
// This limit only keeps the doubled width inside the type. How wide an image may be depends on the shape of
// the launch source; a run checks that when it is planned.
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

// Calls `visitor` with the member that `field` names, const if `project` is.
template <typename TRecord, typename TVisitor>
auto VisitField(TRecord& project, TField field, const TVisitor& visitor)
{
    return std::visit([&](auto member) { return visitor(project.*member); }, ColumnOf(field).Member);
}

// The value of one field: text, bool, integer, or an invalid QVariant for an absent number.
QVariant FieldValue(const TProject& project, TField field);

// Sets one field, converting `value` as QVariant does. A null value empties a text, unticks a bool and makes
// a number absent. If the field is a number and a value that is not null cannot be converted to an integer,
// throws TError(Usage) and leaves the field unchanged. REQUIRES: field is not ID.
void SetFieldValue(TProject& project, TField field, const QVariant& value);

// The fields whose values differ.
TFieldSet DifferentFields(const TProject& project, const TProject& other);

} // namespace Corvadine

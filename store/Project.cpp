#include "store/Project.h"

#include "base/Error.h"

#include <cassert>

namespace Corvadine {

namespace {

struct TValueReader {
    QVariant operator()(std::int64_t number) const { return QVariant::fromValue<qlonglong>(number); }
    QVariant operator()(const QString& text) const { return text; }
    QVariant operator()(bool ticked) const { return ticked; }
    QVariant operator()(std::optional<int> number) const { return number ? QVariant(*number) : QVariant(); }
};

struct TValueWriter {
    void operator()(std::int64_t&) const { assert(!"the database alone assigns IDs"); }
    void operator()(QString& text) const { text = Value.toString(); }
    void operator()(bool& ticked) const { ticked = Value.toBool(); }
    void operator()(std::optional<int>& number) const
    {
        bool isNumber = true;
        const std::optional<int> converted =
            Value.isNull() ? std::nullopt : std::optional(Value.toInt(&isNumber));
        if (!isNumber)
            throw TError(TErrorKind::Usage,
                QStringLiteral("Cannot set %1 to \"%2\": it takes an integer")
                    .arg(QLatin1String(FieldName(Field)), Value.toString()));
        number = converted;
    }

    TField Field;
    const QVariant& Value;
};

} // namespace

const char* FieldName(TField field)
{
    switch (field) {
    case TField::ID:
        return "ID";
    case TField::ProjectFile:
        return "ProjectFile";
    case TField::IconImageName:
        return "IconImageName";
    case TField::SplashImageName:
        return "SplashImageName";
    case TField::IncAndroid:
        return "IncAndroid";
    case TField::IncIPhone:
        return "IncIPhone";
    case TField::IncIPad:
        return "IncIPad";
    case TField::IncWindows:
        return "IncWindows";
    case TField::TwoxSize:
        return "TwoxSize";
    case TField::OutputFolder:
        return "OutputFolder";
    case TField::PickColor:
        return "PickColor";
    case TField::PixelFormat:
        return "PixelFormat";
    case TField::Compression:
        return "Compression";
    case TField::ResampleFilter:
        break;
    }
    return "ResampleFilter";
}

QVariant FieldValue(const TProject& project, TField field)
{
    return VisitField(project, field, TValueReader {});
}

void SetFieldValue(TProject& project, TField field, const QVariant& value)
{
    VisitField(project, field, TValueWriter { field, value });
}

} // namespace Corvadine

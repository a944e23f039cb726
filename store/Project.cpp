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
                u"Cannot set %1 to \"%2\": it takes an integer"_s.arg(
                    QLatin1String(ColumnOf(Field).Name), Value.toString()));
        number = converted;
    }

    TField Field;
    const QVariant& Value;
};

} // namespace

QVariant FieldValue(const TProject& project, TField field)
{
    return VisitField(project, field, TValueReader {});
}

void SetFieldValue(TProject& project, TField field, const QVariant& value)
{
    VisitField(project, field, TValueWriter { field, value });
}

TFieldSet DifferentFields(const TProject& project, const TProject& other)
{
    TFieldSet fields;
    for (const TColumn& column : Columns)
        if (std::visit([&](auto member) { return project.*member != other.*member; }, column.Member))
            fields.insert(column.Field);
    return fields;
}

} // namespace Corvadine

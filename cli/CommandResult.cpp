#include "cli/CommandResult.h"

#include "base/Error.h"

#include <QJsonArray>

#include <new>

namespace Corvadine {

TCommandResult FailureOf(const std::exception_ptr& exception)
{
    TCommandResult result;
    result.Exit = TExit::Failed;
    try {
        std::rethrow_exception(exception);
    } catch (const TError& error) {
        result.Error = error.Text();
        if (error.Kind() == TErrorKind::Usage)
            result.Exit = TExit::WrongUsage;
    } catch (const std::bad_alloc&) {
        result.Error = u"Cannot go on: out of memory"_s;
    } catch (const std::exception& error) {
        result.Error = QString::fromLocal8Bit(error.what());
    } catch (...) {
        result.Error = u"Cannot go on: an unknown error occurred"_s;
    }
    return result;
}

QJsonObject JsonOf(const TCommandResult& result)
{
    QJsonObject json = result.Json;
    json.insert("ok"_L1, result.Exit == TExit::Done);
    if (!result.Error.isEmpty())
        json.insert("error"_L1, result.Error);
    if (!result.Warnings.isEmpty())
        json.insert("warnings"_L1, QJsonArray::fromStringList(result.Warnings));
    return json;
}

} // namespace Corvadine

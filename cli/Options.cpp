#include "cli/Options.h"

#include "base/Error.h"

#include <CLI/CLI.hpp>

namespace Corvadine {

CLI::Option* AddTextOption(CLI::App& app, const std::string& name,
    std::function<void(const QString& text)> take, const std::string& help)
{
    const auto guarded = [name, take = std::move(take)](const std::string& text) {
        try {
            take(QString::fromStdString(text));
        } catch (const TError& error) {
            throw CLI::ValidationError(name, error.what());
        }
    };
    return app.add_option_function<std::string>(name, guarded, help);
}

CLI::Option* AddRequired(CLI::App& app, const std::string& name, std::string& value, const std::string& help)
{
    return app.add_option(name, value, help)->required()->type_name("");
}

int ParseNumber(const QString& text, int least, int most)
{
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    if (!isNumber || number < least || number > most)
        throw TError(
            TErrorKind::Usage, u"'%1' is no whole number from %2 to %3"_s.arg(text).arg(least).arg(most));
    return number;
}

} // namespace Corvadine

#pragma once

#include <QString>

#include <functional>
#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace Corvadine {

// Declares an option, or a positional if `name` has no dashes. Parsing calls `take` with the option's text.
// If `take` throws TError(Usage), parsing ends and the error text begins with the option's name.
CLI::Option* AddTextOption(CLI::App& app, const std::string& name,
    std::function<void(const QString& text)> take, const std::string& help);

// Declares a required positional.
CLI::Option* AddRequired(CLI::App& app, const std::string& name, std::string& value, const std::string& help);

// Returns `text` as a whole number. If `text` is no number from `least` to `most`, throws TError(Usage). The
// error text names the range.
int ParseNumber(const QString& text, int least, int most);

} // namespace Corvadine

#pragma once

#include <QString>

#include <functional>
#include <string>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace Corvadine {

// Declares an option, or a positional if `name` has no dashes, whose text is handed to `take` while parsing.
// A TError(Usage) from there ends the parsing and is reported under the option's name.
CLI::Option* AddTextOption(CLI::App& app, const std::string& name,
    std::function<void(const QString& text)> take, const std::string& help);

// Declares a required positional.
CLI::Option* AddRequired(CLI::App& app, const std::string& name, std::string& value, const std::string& help);

// The whole number that `text` stands for. Throws TError(Usage), naming the range, for any other text.
int ParseNumber(const QString& text, int least, int most);

} // namespace Corvadine

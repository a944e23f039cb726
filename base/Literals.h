#pragma once

#include <QString>

namespace Corvadine {

// u"text"_s is a QString made at compile time, "text"_L1 a QLatin1String.
using namespace Qt::Literals::StringLiterals;

} // namespace Corvadine

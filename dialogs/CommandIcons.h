#pragma once

#include <QIcon>
#include <QString>

namespace Corvadine {

// The icon of the command `name` ("add-project"): the program's own drawing if it carries one, else the
// nearest that the platform's style has; null for a name that neither knows.
QIcon CommandIcon(const QString& name);

} // namespace Corvadine

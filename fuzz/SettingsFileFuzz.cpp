#include "app/SettingsFile.h"
#include "base/Error.h"
#include "base/Files.h"
#include "fuzz/Fuzzing.h"

#include <QStringConverter>

using namespace Corvadine;

namespace {

// Returns whether `part` is left if some bytes of `whole` are taken out.
bool Contains(const QByteArray& whole, const QByteArray& part)
{
    qsizetype found = 0;
    for (qsizetype i = 0; i < whole.size() && found < part.size(); ++i)
        found += whole[i] == part[found] ? 1 : 0;
    return found == part.size();
}

void Set(TSettingsFile& settings, const QString& project)
{
    settings.SetText("ProjectFile", project);
    settings.SetInteger("ScreenLeft", -7);
    settings.Save();
}

} // namespace

// Settings files: values that are set can be read again, whatever else the file holds. Saving the values once
// more gives the same bytes. No other byte of the file is lost.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes = Fuzzing::BytesOf(data, size);
    const QString path = Fuzzing::FileWith(u"settings.ini"_s, bytes);
    TSettingsFile settings(path);
    const QString project = settings.Text("ProjectFile");
    const bool isOther = settings.Text("ScreenLeft").isEmpty() && project.isEmpty();
    Set(settings, project);
    TSettingsFile again(path);
    Fuzzing::Require(again.HasSection());
    Fuzzing::Require(again.Text("ProjectFile") == project);
    Fuzzing::Require(again.Integer("ScreenLeft", 0) == -7);
    const QByteArray saved = ReadFile(path, u"read"_s);
    const auto marked = QStringConverter::encodingForData(bytes);
    const bool isConverted = marked && *marked != QStringConverter::Utf8;
    Fuzzing::Require(isConverted || !isOther || Contains(saved, bytes));
    Set(again, project);
    Fuzzing::Require(ReadFile(path, u"read"_s) == saved);
    return 0;
}

#include "app/SettingsFile.h"
#include "base/Error.h"
#include "fuzz/Fuzzing.h"

using namespace Corvadine;

// Settings files: values that were set and saved are read again, whatever else the file holds.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString path = Fuzzing::FileWith(u"settings.ini"_s, Fuzzing::BytesOf(data, size));
    TSettingsFile settings(path);
    const QString project = settings.Text("ProjectFile");
    settings.SetText("ProjectFile", project);
    settings.SetInteger("ScreenLeft", -7);
    settings.Save();
    TSettingsFile again(path);
    Fuzzing::Require(again.HasSection());
    Fuzzing::Require(again.Text("ProjectFile") == project);
    Fuzzing::Require(again.Integer("ScreenLeft", 0) == -7);
    return 0;
}

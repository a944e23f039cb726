#include "base/Error.h"
#include "fuzz/Fuzzing.h"
#include "support/update/UpdatePackage.h"

#include <QDir>
#include <QFileInfo>

using namespace Corvadine;

// Packages of an update: only the planned file is extracted. Unless the package is refused, the file has
// exactly the planned size.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString file = Fuzzing::FileWith(u"package.zip"_s, Fuzzing::BytesOf(data, size));
    const QDir out(Fuzzing::Folder().filePath(u"out"_s));
    out.mkpath(u"."_s);
    constexpr qint64 PlannedSize = 5;
    const QString target = out.filePath(u"wanted"_s);
    QFile::remove(target);
    try {
        TPackagePlan plan;
        plan.Wanted.insert(u"a.txt"_s, { target, PlannedSize });
        plan.Known = { u"a.txt"_s, u"b.txt"_s };
        TPackageExtractor extractor(file, plan);
        while (extractor.Step()) { }
        Fuzzing::Require(QFileInfo(target).size() == PlannedSize);
    } catch (const TError&) {
        Fuzzing::Require(!QFileInfo::exists(target) || QFileInfo(target).size() <= PlannedSize);
    }
    const QStringList entries =
        out.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    Fuzzing::Require(entries.isEmpty() || entries == QStringList { u"wanted"_s });
    return 0;
}

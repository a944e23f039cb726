// Checks the files that tools/make-update has made, by the rules of the program itself. Checks the signature,
// and the limits and names in the control file. If PACKAGE_FOLDER is given, also checks the sizes and hashes
// of the packages. If a check fails, prints the reason in one line and ends with the status 1. usage:
// check-update PUBLIC_KEY CONTROL_FILE [PACKAGE_FOLDER]

#include "base/Error.h"
#include "base/Files.h"
#include "support/update/rules/ControlFile.h"
#include "support/update/rules/FileHash.h"
#include "support/update/rules/UpdateSignature.h"

#include <QCoreApplication>

#include <cstdio>

using namespace Corvadine;

namespace {

void Check(const QByteArray& publicKey, const QString& path, const QString& packageFolder)
{
    const TUpdateLimits limits;
    const QString attempt = u"check the release"_s;
    const QByteArray bytes = ReadFile(path, attempt);
    if (bytes.size() > limits.ControlFile)
        throw TError(TErrorKind::BadInput, attempt, path,
            u"it has %1 bytes, and every copy of the program takes %2 only"_s.arg(bytes.size())
                .arg(limits.ControlFile));
    const QByteArray signature = ReadFile(path + TUpdateSettings::SignatureSuffix, attempt);
    const TControlFile release = ReadControlFile(bytes, signature, PublicKeyOf(publicKey), limits);
    for (const TUpdateFile& file : release.Files)
        if (!file.Mandatory && file.Comparison == TComparison::Version)
            throw TError(TErrorKind::BadInput, attempt, file.Target,
                u"a file that the user may leave out cannot be compared by version, since the release "
                "counts as installed without it"_s);
    if (packageFolder.isEmpty())
        return;
    for (const TControlPackage& package : release.Packages)
        VerifyFile(packageFolder + u'/' + package.Name, package.Name, package.Size, package.Sha256);
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3 && arguments.size() != 4) {
        std::fputs("usage: check-update PUBLIC_KEY CONTROL_FILE [PACKAGE_FOLDER]\n", stderr);
        return 2;
    }
    try {
        Check(arguments[1].toLatin1(), arguments[2], arguments.value(3));
        return 0;
    } catch (const TError& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}

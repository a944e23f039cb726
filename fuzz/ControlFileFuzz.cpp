#include "base/Error.h"
#include "fuzz/Fuzzing.h"
#include "support/update/rules/ControlFile.h"
#include "support/update/rules/UpdateNames.h"
#include "support/update/rules/UpdateSignature.h"

#include <sodium.h>

using namespace Corvadine;

namespace {

// Signs each input. The check of the signature then accepts the input, and its content is read.
struct TStolenKey {
    TStolenKey()
    {
        const QByteArray seed(crypto_sign_SEEDBYTES, 'f');
        crypto_sign_seed_keypair(Bytes(Public), Bytes(Secret), reinterpret_cast<const uchar*>(seed.data()));
    }

    QByteArray Sign(const QByteArray& bytes) const
    {
        QByteArray signature(SignatureBytes, '\0');
        crypto_sign_detached(Bytes(signature), nullptr, reinterpret_cast<const uchar*>(bytes.data()),
            static_cast<unsigned long long>(bytes.size()), reinterpret_cast<const uchar*>(Secret.data()));
        return signature;
    }

    static uchar* Bytes(QByteArray& bytes) { return reinterpret_cast<uchar*>(bytes.data()); }

    QByteArray Public { crypto_sign_PUBLICKEYBYTES, '\0' };
    QByteArray Secret { crypto_sign_SECRETKEYBYTES, '\0' };
};

} // namespace

// The signed control file of updates. An accepted file keeps the limits and names only files that an update
// may write. Each of these files is in one of the packages that the control file lists.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TStolenKey key;
    const QByteArray bytes = Fuzzing::BytesOf(data, size);
    const TUpdateLimits limits;
    try {
        const TControlFile control = ReadControlFile(bytes, key.Sign(bytes), key.Public, limits);
        Fuzzing::Require(ParseVersion(control.Version).has_value() && control.ValidUntil.isValid());
        Fuzzing::Require(!control.Files.empty() && control.Files.size() <= std::size_t(limits.Files));
        qint64 total = 0;
        for (const TUpdateFile& file : control.Files) {
            Fuzzing::Require(CheckedTarget(file.Target) == file.Target);
            Fuzzing::Require(file.Package < control.Packages.size() && file.Date.isValid());
            total += file.Size;
        }
        Fuzzing::Require(total >= 0 && total <= limits.Installed);
        for (const TControlPackage& package : control.Packages)
            Fuzzing::Require(!package.Name.contains(u'/') && package.Size <= limits.Package);
        KnownReleaseOf(control);
    } catch (const TError& error) {
        Fuzzing::Require(error.Kind() == TErrorKind::BadInput);
    }
    return 0;
}

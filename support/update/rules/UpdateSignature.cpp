#include "support/update/rules/UpdateSignature.h"

#include "base/Error.h"

#include <sodium.h>

namespace Corvadine {

namespace {

const unsigned char* Data(const QByteArray& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

} // namespace

QByteArray PublicKeyOf(const QByteArray& base64)
{
    const auto decoded = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
    return decoded && (*decoded).size() == crypto_sign_PUBLICKEYBYTES ? *decoded : QByteArray();
}

void RequireKey(const QByteArray& publicKey)
{
    if (publicKey.size() != crypto_sign_PUBLICKEYBYTES)
        throw TError(TErrorKind::BadInput,
            u"Updates are switched off: this copy of Corvadine has no key to check them with"_s);
}

void VerifySignature(const QByteArray& bytes, const QByteArray& signature, const QByteArray& publicKey)
{
    static_assert(SignatureBytes == crypto_sign_BYTES);
    RequireKey(publicKey);
    if (sodium_init() < 0 || signature.size() != SignatureBytes
        || crypto_sign_verify_detached(
               Data(signature), Data(bytes), static_cast<unsigned long long>(bytes.size()), Data(publicKey))
            != 0)
        throw TError(TErrorKind::BadInput,
            u"The update server's answer is not signed by Corvadine's publisher and was not used"_s);
}

} // namespace Corvadine

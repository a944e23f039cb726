#pragma once

#include <QByteArray>

namespace Corvadine {

// Decodes a public key of 44 characters of base64. Returns an empty array for any other text.
QByteArray PublicKeyOf(const QByteArray& base64);

// Throws TError(BadInput) unless `publicKey` has the size of a key. The text of the error says that updates
// are switched off.
void RequireKey(const QByteArray& publicKey);

inline constexpr qint64 SignatureBytes = 64;

// Throws TError(BadInput) unless `signature` (64 bytes) is the Ed25519 signature of all of `bytes` by the
// owner of `publicKey` (32 bytes). Also throws if `publicKey` is not a key.
// https://www.rfc-editor.org/rfc/rfc8032
void VerifySignature(const QByteArray& bytes, const QByteArray& signature, const QByteArray& publicKey);

} // namespace Corvadine

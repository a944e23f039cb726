#pragma once

#include <QByteArray>

namespace Corvadine {

// The key that 44 characters of base64 stand for; empty when they are no key.
QByteArray PublicKeyOf(const QByteArray& base64);

// Throws TError(BadInput), which says that updates are switched off, unless `publicKey` has the size of a
// key.
void RequireKey(const QByteArray& publicKey);

inline constexpr qint64 SignatureBytes = 64;

// Returns only if `signature` (64 bytes) is the Ed25519 signature of all of `bytes` by the owner of
// `publicKey` (32 bytes); throws TError(BadInput) otherwise, also when there is no usable key.
// https://www.rfc-editor.org/rfc/rfc8032
void VerifySignature(const QByteArray& bytes, const QByteArray& signature, const QByteArray& publicKey);

} // namespace Corvadine

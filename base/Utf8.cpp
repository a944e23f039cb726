#include "base/Utf8.h"

#include <QStringDecoder>

namespace Corvadine {

std::optional<QString> DecodeUtf8(const QByteArray& bytes)
{
    QStringDecoder decoder(QStringConverter::Utf8,
        QStringConverter::Flag::Stateless | QStringConverter::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    return decoder.hasError() ? std::nullopt : std::optional(std::move(text));
}

} // namespace Corvadine

#pragma once

#include <QByteArray>
#include <QIODevice>

namespace Corvadine {

// The bytes of a file. Only one piece of the file is in memory, because the file may be far larger than
// the picture. Moves the position of the file, which must be able to seek and outlive the object.
class TFileBytes {
public:
    explicit TFileBytes(QIODevice& file) : FFile(file), FSize(file.size()) { }

    qint64 Size() const { return FSize; }

    // Returns the byte at `at`, or 0 past the end of the file.
    int At(qint64 at)
    {
        if (at < FPieceAt || at >= FPieceAt + FPiece.size())
            Fetch(at);
        return at < FPieceAt + FPiece.size() ? static_cast<uchar>(FPiece[at - FPieceAt]) : 0;
    }

    // Returns the two bytes at `at` as a number, the low byte first.
    int Word(qint64 at) { return At(at) | At(at + 1) << 8; }

    // Returns the position of the first `byte` at or after `at`, or the size of the file if there is none.
    qint64 Find(char byte, qint64 at)
    {
        for (; at < FSize; at = FPieceAt + FPiece.size()) {
            At(at);
            if (FPiece.isEmpty()) // a read error
                break;
            const qsizetype found = FPiece.indexOf(byte, at - FPieceAt);
            if (found >= 0)
                return FPieceAt + found;
        }
        return FSize;
    }

private:
    void Fetch(qint64 at)
    {
        constexpr qint64 PieceBytes = qint64 { 64 } * 1024;
        FPiece = at < FSize && FFile.seek(at) ? FFile.read(PieceBytes) : QByteArray();
        FPieceAt = at;
    }

    QIODevice& FFile;
    qint64 FSize;
    qint64 FPieceAt = 0;
    QByteArray FPiece;
};

} // namespace Corvadine

#include "images/CmykJpeg.h"

#include "images/ColorProfile.h"

#include <QIODevice>

#include <csetjmp>
#include <cstdio> // jpeglib.h needs it, and does not include it

#include <jpeglib.h>

namespace Corvadine {

namespace {

// Lets libjpeg jump back after an error. Otherwise libjpeg would end the program.
struct TErrorManager {
    jpeg_error_mgr Common {}; // first, because libjpeg knows only this part
    std::jmp_buf OnError {};
};

[[noreturn]] void JumpOut(j_common_ptr decoder)
{
    std::longjmp(reinterpret_cast<TErrorManager*>(decoder->err)->OnError, 1); // NOLINT(cert-err52-cpp)
}

void IgnoreMessage(j_common_ptr) { }

// Returns the ICC profile. A JPEG holds it in markers that are numbered from 1
// (https://www.color.org/icc_specs2.xalter, annex B.4).
QByteArray JoinedProfile(const jpeg_decompress_struct& decoder)
{
    constexpr QByteArrayView Name("ICC_PROFILE\0", 12);
    constexpr qsizetype HeadBytes = Name.size() + 2; // with the marker's number and the count of markers
    QByteArray profile;
    for (const jpeg_marker_struct* marker = decoder.marker_list; marker; marker = marker->next) {
        const QByteArrayView data(marker->data, static_cast<qsizetype>(marker->data_length));
        if (data.size() >= HeadBytes && data.startsWith(Name))
            profile.append(data.sliced(HeadBytes));
    }
    return profile;
}

// Decodes the inks and their profile. Returns false for a file without inks or without a profile, and after
// an error. Must not make objects that need a destructor, because an error jumps past the destructors.
bool Decode(jpeg_decompress_struct& decoder, TErrorManager& errors, const QByteArray& file, QImage& inks,
    QByteArray& profile)
{
    if (setjmp(errors.OnError) != 0) // NOLINT(cert-err52-cpp)
        return false;
    jpeg_create_decompress(&decoder);
    jpeg_mem_src(&decoder, reinterpret_cast<const unsigned char*>(file.data()),
        static_cast<unsigned long>(file.size()));
    jpeg_save_markers(&decoder, JPEG_APP0 + 2, 0xFFFF);
    jpeg_read_header(&decoder, TRUE);
    if (decoder.num_components != 4)
        return false;
    profile = JoinedProfile(decoder);
    if (profile.isEmpty())
        return false;
    decoder.out_color_space = JCS_CMYK;
    jpeg_start_decompress(&decoder);
    inks = QImage(static_cast<int>(decoder.output_width), static_cast<int>(decoder.output_height),
        QImage::Format_RGB32);
    while (!inks.isNull() && decoder.output_scanline < decoder.output_height) {
        JSAMPROW row = inks.scanLine(static_cast<int>(decoder.output_scanline));
        jpeg_read_scanlines(&decoder, &row, 1);
    }
    jpeg_finish_decompress(&decoder);
    return true;
}

} // namespace

QImage ReadCmykJpeg(QIODevice& file)
{
    file.seek(0);
    const QByteArray bytes = file.readAll();
    TErrorManager errors;
    jpeg_decompress_struct decoder {};
    decoder.err = jpeg_std_error(&errors.Common);
    errors.Common.error_exit = JumpOut;
    errors.Common.output_message = IgnoreMessage;
    QImage inks;
    QByteArray profile;
    const bool isDecoded = Decode(decoder, errors, bytes, inks, profile);
    jpeg_destroy_decompress(&decoder);
    return isDecoded ? InksToSrgb(std::move(inks), profile) : QImage();
}

} // namespace Corvadine

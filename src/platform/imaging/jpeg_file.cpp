#include "platform/imaging/jpeg_file.h"

#include "platform/imaging/jpeg_segments.h"

#include <csetjmp>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include <jerror.h>
#include <jpeglib.h>

namespace {

/// Words of the picture have blue in the low byte.
constexpr J_COLOR_SPACE PixelWords = QSysInfo::ByteOrder == QSysInfo::LittleEndian ? JCS_EXT_BGRA : JCS_EXT_ARGB;
constexpr int CmykComponents = 4;
constexpr double MetersAnInch = 0.0254;

struct ErrorManager
{
    jpeg_error_mgr base;
    jmp_buf leave;
    bool cut;
};

ErrorManager& ErrorsOf(j_common_ptr common)
{
    return *reinterpret_cast<ErrorManager*>(common->err);
}

void Leave(j_common_ptr common)
{
    longjmp(ErrorsOf(common).leave, 1);
}

/// Cameras' files draw warnings of many kinds. The one that counts is that bits were wanted where the data had ended;
/// that the mark of the end alone is missing costs no pixel.
void NoteWarning(j_common_ptr common, int level)
{
    if (level >= 0)
        return;
    const auto* decoder = reinterpret_cast<j_decompress_ptr>(common);
    ErrorManager& errors = ErrorsOf(common);
    // Where scans follow each other, a missing end may be a missing scan; and arithmetic coding warns of nothing else.
    const bool severalScans = decoder->progressive_mode || decoder->comps_in_scan < decoder->num_components;
    if ((errors.base.msg_code == JWRN_HIT_MARKER && decoder->unread_marker == JPEG_EOI) ||
        (errors.base.msg_code == JWRN_JPEG_EOF && (severalScans || decoder->arith_code)))
        errors.cut = true;
}

/// The decoder leaves a fault by a jump, so that no step may hold anything that would have to be released.
class Decoder
{
public:
    explicit Decoder(const QByteArray& content) : m_content(content)
    {
        m_info.err = jpeg_std_error(&m_errors.base);
        m_errors.base.error_exit = &Leave;
        m_errors.base.emit_message = &NoteWarning;
        m_errors.base.output_message = [](j_common_ptr) {};
        m_errors.cut = false;
        m_ready = Run([](Decoder& self) { jpeg_create_decompress(&self.m_info); });
    }
    ~Decoder() { jpeg_destroy_decompress(&m_info); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    bool ReadHeader()
    {
        return m_ready && Run([](Decoder& self) {
                   const auto* bytes = reinterpret_cast<const unsigned char*>(self.m_content.constData());
                   jpeg_mem_src(&self.m_info, bytes, static_cast<unsigned long>(self.m_content.size()));
                   jpeg_read_header(&self.m_info, TRUE);
               });
    }

    jpegfile::Decoded Read(int eighths)
    {
        m_info.scale_num = static_cast<unsigned>(eighths);
        m_info.scale_denom = jpegfile::FullScale;
        m_info.out_color_space = m_info.num_components == CmykComponents ? JCS_CMYK : PixelWords;
        if (!Run([](Decoder& self) { jpeg_start_decompress(&self.m_info); }))
            return {};
        QImage picture(static_cast<int>(m_info.output_width), static_cast<int>(m_info.output_height),
                       QImage::Format_RGB32);
        if (picture.isNull())
            return {};
        m_bits = picture.bits();
        m_stride = picture.bytesPerLine();
        m_cmyk.resize(m_info.out_color_space == JCS_CMYK ? size_t{m_info.output_width} * CmykComponents : 0);
        if (!Run([](Decoder& self) { self.ReadRows(); }))
            return {};
        return {picture, m_errors.cut};
    }

    const jpeg_decompress_struct& Info() const { return m_info; }
    bool HasMultipleScans() { return jpeg_has_multiple_scans(&m_info) != 0; }

private:
    bool Run(void (*step)(Decoder&))
    {
        if (setjmp(m_errors.leave) != 0)
            return false;
        step(*this);
        return true;
    }

    void ReadRows()
    {
        while (m_info.output_scanline < m_info.output_height) {
            uchar* target = m_bits + m_info.output_scanline * m_stride;
            JSAMPROW row = m_cmyk.empty() ? target : m_cmyk.data();
            if (jpeg_read_scanlines(&m_info, &row, 1) == 0)
                return;
            if (!m_cmyk.empty())
                TakeCmyk(reinterpret_cast<QRgb*>(target));
        }
    }

    /// Stored inverted, as every program writes it.
    void TakeCmyk(QRgb* target) const
    {
        for (const uchar* at = m_cmyk.data(); at < m_cmyk.data() + m_cmyk.size(); at += CmykComponents)
            *target++ = qRgb(at[0] * at[3] / 255, at[1] * at[3] / 255, at[2] * at[3] / 255);
    }

    const QByteArray& m_content;
    jpeg_decompress_struct m_info = {};
    ErrorManager m_errors = {};
    bool m_ready = false;
    uchar* m_bits = nullptr;
    qsizetype m_stride = 0;
    std::vector<uchar> m_cmyk;
};

/// As the decoder, it leaves a fault by a jump.
class Encoder
{
public:
    Encoder(const QImage& picture, int quality) : m_picture(picture), m_quality(quality)
    {
        m_info.err = jpeg_std_error(&m_errors.base);
        m_errors.base.error_exit = &Leave;
        m_errors.base.output_message = [](j_common_ptr) {};
    }
    ~Encoder()
    {
        jpeg_destroy_compress(&m_info);
        std::free(m_bytes);
    }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    QByteArray Write()
    {
        if (setjmp(m_errors.leave) != 0) {
            m_bytes = nullptr; // The encoder may have moved it, and has told nobody.
            return {};
        }
        WriteRows();
        return {reinterpret_cast<const char*>(m_bytes), static_cast<qsizetype>(m_size)};
    }

private:
    void WriteRows()
    {
        jpeg_create_compress(&m_info);
        jpeg_mem_dest(&m_info, &m_bytes, &m_size);
        m_info.image_width = static_cast<JDIMENSION>(m_picture.width());
        m_info.image_height = static_cast<JDIMENSION>(m_picture.height());
        m_info.input_components = 4;
        m_info.in_color_space = PixelWords;
        jpeg_set_defaults(&m_info);
        jpeg_set_quality(&m_info, m_quality, TRUE);
        // Brightness is the one whose resolution is twice that of the others by default.
        m_info.comp_info[0].h_samp_factor = 1;
        m_info.comp_info[0].v_samp_factor = 1;
        m_info.density_unit = 1; // Dots an inch.
        m_info.X_density = static_cast<UINT16>(qBound(1, qRound(m_picture.dotsPerMeterX() * MetersAnInch), 65535));
        m_info.Y_density = static_cast<UINT16>(qBound(1, qRound(m_picture.dotsPerMeterY() * MetersAnInch), 65535));
        jpeg_start_compress(&m_info, TRUE);
        while (m_info.next_scanline < m_info.image_height) {
            // The encoder only reads.
            auto* row = const_cast<JSAMPROW>(m_picture.constScanLine(static_cast<int>(m_info.next_scanline)));
            jpeg_write_scanlines(&m_info, &row, 1);
        }
        jpeg_finish_compress(&m_info);
    }

    const QImage& m_picture;
    const int m_quality;
    jpeg_compress_struct m_info = {};
    ErrorManager m_errors = {};
    unsigned char* m_bytes = nullptr;
    unsigned long m_size = 0;
};

void CountScans(const QByteArray& content, jpegfile::Layout& layout)
{
    const std::span file(reinterpret_cast<const std::uint8_t*>(content.constData()),
                         static_cast<size_t>(content.size()));
    for (auto segment = NextJpegSegment(file, FirstJpegSegment); segment;
         segment = NextJpegSegment(file, segment->end)) {
        if (segment->marker == JpegSegment::Scan && ++layout.scans == 1)
            layout.scanBytes = qMax<qint64>(0, content.size() - static_cast<qint64>(segment->end));
    }
}

} // namespace

jpegfile::Layout jpegfile::LayoutOf(const QByteArray& content)
{
    Layout layout;
    Decoder decoder(content);
    if (!decoder.ReadHeader())
        return layout;
    const jpeg_decompress_struct& info = decoder.Info();
    layout.size = QSize(static_cast<int>(info.image_width), static_cast<int>(info.image_height));
    if (decoder.HasMultipleScans()) {
        for (int index = 0; index < info.num_components; ++index) {
            const jpeg_component_info& component = info.comp_info[index];
            layout.keptBytes += qint64{component.width_in_blocks} * component.height_in_blocks * qint64{sizeof(JBLOCK)};
        }
    }
    CountScans(content, layout);
    return layout;
}

jpegfile::Decoded jpegfile::Decode(const QByteArray& content, int eighths)
{
    Decoder decoder(content);
    return decoder.ReadHeader() ? decoder.Read(eighths) : Decoded();
}

QByteArray jpegfile::Encode(const QImage& picture, int quality)
{
    return picture.isNull() ? QByteArray() : Encoder(picture, quality).Write();
}

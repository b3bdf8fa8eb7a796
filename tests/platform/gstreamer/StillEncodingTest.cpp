#include "platform/gstreamer/live/DisplayScaler.h"
#include "platform/gstreamer/stills/GstStillFrame.h"
#include "support/testing.h"

#include <cmath>

using namespace Qt::StringLiterals;

namespace {
const QList<QColor> Bars = {Qt::black, Qt::white, QColor(200, 60, 50), QColor(40, 90, 180)};

struct Pixel
{
    guint8 values[4]; ///< Alpha first, as the packers of the media library take it.
};

/// A colour as the format holds it: red, green, blue, or luma and two colour differences.
Pixel PixelOf(const QColor& colour, const GstVideoInfo& info)
{
    if (GST_VIDEO_INFO_IS_RGB(&info))
        return {{255, guint8(colour.red()), guint8(colour.green()), guint8(colour.blue())}};
    const bool is709 = info.colorimetry.matrix == GST_VIDEO_COLOR_MATRIX_BT709;
    const double kr = is709 ? 0.2126 : 0.299;
    const double kb = is709 ? 0.0722 : 0.114;
    const double luma = kr * colour.redF() + (1 - kr - kb) * colour.greenF() + kb * colour.blueF();
    const double blue = (colour.blueF() - luma) / (2 * (1 - kb));
    const double red = (colour.redF() - luma) / (2 * (1 - kr));
    const bool isLimited = info.colorimetry.range == GST_VIDEO_COLOR_RANGE_16_235;
    const auto byte = [](double value) { return guint8(std::lround(qBound(0.0, value, 255.0))); };
    return {{255, byte(isLimited ? 16 + 219 * luma : 255 * luma), byte(128 + (isLimited ? 224 : 255) * blue),
             byte(128 + (isLimited ? 224 : 255) * red)}};
}

/// Upright bars in the colours above.
GstPointer<GstSample> BarsIn(const QByteArray& format, const QByteArray& colorimetry, QSize size)
{
    GstVideoInfo info;
    gst_video_info_set_format(&info, gst_video_format_from_string(format), guint(size.width()), guint(size.height()));
    gst_video_colorimetry_from_string(&info.colorimetry, colorimetry);
    std::vector<Pixel> line(std::size_t(size.width()));
    for (int x = 0; x < size.width(); ++x)
        line[std::size_t(x)] = PixelOf(Bars[x * Bars.size() / size.width()], info);

    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, info.size, nullptr);
    {
        MappedFrame frame(info, buffer, GST_MAP_WRITE);
        // Two lines at a time, since a line of colour differences may serve two lines of the picture.
        for (int y = 0; y < size.height(); ++y)
            info.finfo->pack_func(info.finfo, GST_VIDEO_PACK_FLAG_NONE, line.data(), 0, frame.Frame()->data,
                                  info.stride, GST_VIDEO_CHROMA_SITE_NONE, y, size.width());
    }
    const GstPointer<GstCaps> caps(gst_video_info_to_caps(&info));
    GstPointer<GstSample> sample(gst_sample_new(buffer, caps.get(), nullptr, nullptr));
    gst_buffer_unref(buffer);
    return sample;
}

void CompareBars(const QImage& picture, bool isGrey, int tolerance)
{
    for (int bar = 0; bar < Bars.size(); ++bar) {
        const int luma = qRound(0.299 * Bars[bar].red() + 0.587 * Bars[bar].green() + 0.114 * Bars[bar].blue());
        const QColor wanted = isGrey ? QColor(luma, luma, luma) : Bars[bar];
        for (const int y : {1, picture.height() / 2 - 1, picture.height() / 2 + 1, picture.height() - 2}) {
            const int x = picture.width() * (2 * bar + 1) / (2 * int(Bars.size()));
            const QColor seen = picture.pixelColor(x, y);
            const bool alike = std::abs(seen.red() - wanted.red()) <= tolerance &&
                               std::abs(seen.green() - wanted.green()) <= tolerance &&
                               std::abs(seen.blue() - wanted.blue()) <= tolerance;
            QVERIFY2(alike, qPrintable(u"bar %1 at line %2: %3 instead of %4"_s.arg(bar).arg(y).arg(seen.name(),
                                                                                                    wanted.name())));
        }
    }
}
} // namespace

class StillEncodingTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { gst_init(nullptr, nullptr); }

    void ColoursAreRightInEveryFormat_data()
    {
        Columns<QByteArray, QByteArray>("format", "colorimetry");
        const QByteArray full601 = "1:4:0:0";
        const QByteArray limited601 = "2:4:0:0";
        for (const QByteArray format : {"I420", "YV12", "Y42B", "Y444", "NV12", "NV21", "YUY2", "UYVY"})
            for (const QByteArray& colorimetry : {full601, limited601, QByteArray("bt709"), QByteArray("bt601")})
                QTest::addRow("%s %s", format.constData(), colorimetry.constData()) << format << colorimetry;
        for (const QByteArray format : {"RGB", "BGR", "BGRx"})
            QTest::addRow("%s", format.constData()) << format << QByteArray("sRGB");
        QTest::newRow("grey, full") << QByteArray("GRAY8") << full601;
        QTest::newRow("grey, limited") << QByteArray("GRAY8") << limited601;
    }

    void ColoursAreRightInEveryFormat()
    {
        QFETCH2(QByteArray, format, QByteArray, colorimetry);
        const GstPointer<GstSample> sample = BarsIn(format, colorimetry, {640, 480});
        const QImage still = QImage::fromData(GstStillFrame(sample.get()).EncodeJPEG(95), "JPEG");
        QCOMPARE(still.size(), QSize(640, 480));
        CompareBars(still, format == "GRAY8", 5);

        // The screen shows the same colours.
        const QImage shown = DisplayScaler().Scale(sample.get(), {320, 320}, {});
        QCOMPARE(shown.size(), QSize(320, 240));
        CompareBars(shown, format == "GRAY8", 6);
    }

    void AnySizeIsEncodedWhole_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::newRow("1080p") << QSize(1920, 1080);
        QTest::newRow("no whole blocks") << QSize(642, 362);
        QTest::newRow("odd") << QSize(333, 167);
    }

    void AnySizeIsEncodedWhole()
    {
        QFETCH(QSize, size);
        for (const QByteArray format : {"I420", "YUY2", "NV12"}) {
            const GstPointer<GstSample> sample = BarsIn(format, "2:4:0:0", size);
            const QImage still = QImage::fromData(GstStillFrame(sample.get()).EncodeJPEG(90), "JPEG");
            QCOMPARE(still.size(), size);
            CompareBars(still, false, 12);
        }
    }

    void PixelsThatAreNotSquare()
    {
        GstPointer<GstSample> sample = BarsIn("UYVY", "bt601", {720, 576});
        GstCaps* caps = gst_caps_copy(gst_sample_get_caps(sample.get()));
        gst_caps_set_simple(caps, "pixel-aspect-ratio", GST_TYPE_FRACTION, 16, 15, "interlace-mode", G_TYPE_STRING,
                            "interleaved", nullptr);
        const GstPointer<GstSample> wide(gst_sample_new(gst_sample_get_buffer(sample.get()), caps, nullptr, nullptr));
        gst_caps_unref(caps);
        const QImage shown = DisplayScaler().Scale(wide.get(), {560, 420}, {});
        QCOMPARE(shown.size(), QSize(560, 420));
        CompareBars(shown, false, 6);
        QCOMPARE(QImage::fromData(GstStillFrame(wide.get()).EncodeJPEG(90), "JPEG").size(), QSize(720, 576));
    }
};

QTEST_GUILESS_MAIN(StillEncodingTest)
#include "StillEncodingTest.moc"

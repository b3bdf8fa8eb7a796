#include "platform/gstreamer/testpicture/TestPicturePainter.h"

#include <cmath>
#include <cstring>

namespace {
std::uint8_t* Row(GstVideoFrame& frame, guint plane, int y)
{
    return static_cast<std::uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, plane)) +
           std::ptrdiff_t(y) * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, plane);
}

int NumberTop(int height)
{
    return height * 15 / 16;
}

void CopyPlane(GstVideoFrame& frame, guint plane, const std::uint8_t* scene, int sceneWidth, int left, int top)
{
    const int width = GST_VIDEO_FRAME_COMP_WIDTH(&frame, plane);
    const int height = NumberTop(GST_VIDEO_FRAME_COMP_HEIGHT(&frame, plane));
    for (int y = 0; y < height; ++y)
        std::memcpy(Row(frame, plane, y), scene + std::ptrdiff_t(top + y) * sceneWidth + left, std::size_t(width));
}

void PaintNumber(GstVideoFrame& frame, quint32 number)
{
    const int width = GST_VIDEO_FRAME_WIDTH(&frame);
    const int height = GST_VIDEO_FRAME_HEIGHT(&frame);
    const int top = NumberTop(height);
    for (int cell = 0; cell < 32; ++cell) {
        const int from = width * cell / 32;
        const int to = width * (cell + 1) / 32;
        std::memset(Row(frame, 0, top) + from, ((number >> (31 - cell)) & 1) != 0 ? 255 : 0, std::size_t(to - from));
    }
    for (int y = top + 1; y < height; ++y)
        std::memcpy(Row(frame, 0, y), Row(frame, 0, top), std::size_t(width));
    for (guint plane = 1; plane <= 2; ++plane) {
        const int chromaHeight = GST_VIDEO_FRAME_COMP_HEIGHT(&frame, plane);
        for (int y = NumberTop(chromaHeight); y < chromaHeight; ++y)
            std::memset(Row(frame, plane, y), 128, std::size_t(GST_VIDEO_FRAME_COMP_WIDTH(&frame, plane)));
    }
}
} // namespace

void TestPicturePainter::SetFormat(const GstVideoInfo& info)
{
    m_info = info;
    ChooseScene(TestDevice().Current()); // Drawn now, so that the first frame doesn't wait for it.
}

void TestPicturePainter::ChooseScene(const TestPictureState::Properties& properties)
{
    m_scene = TestSceneFor(m_info.width, m_info.height);
    if (properties.brightness != 0 || properties.contrast != 100)
        m_scene = AdjustedScene(*m_scene, properties.brightness, properties.contrast);
    m_sceneGeneration = properties.generation;
}

void TestPicturePainter::Paint(GstVideoFrame& frame, quint32 number)
{
    const TestPictureState::Properties properties = TestDevice().Current();
    if (m_sceneGeneration != properties.generation)
        ChooseScene(properties);
    m_path += properties.speed * 0.006;
    const int reach = TestSceneMargin / 4;
    const int left = 2 * int(reach * (1 + std::sin(m_path)));
    const int top = 2 * int(reach * (1 + std::sin(m_path * 1.31)));

    CopyPlane(frame, 0, m_scene->luma.data(), m_scene->width, left, top);
    CopyPlane(frame, 1, m_scene->blue.data(), m_scene->width / 2, left / 2, top / 2);
    CopyPlane(frame, 2, m_scene->red.data(), m_scene->width / 2, left / 2, top / 2);
    PaintNumber(frame, number);
}

#pragma once

#include "platform/gstreamer/testpicture/TestPictureScene.h"
#include "platform/gstreamer/testpicture/TestPictureState.h"

#include <gst/video/video.h>

/// Paints the frames of the test picture: the part of the scene that its movement has come to, over the number strip.
class TestPicturePainter
{
public:
    /// Frames are 4:2:0. Draws the scene when the size is a new one.
    void SetFormat(const GstVideoInfo& info);
    const GstVideoInfo& Info() const { return m_info; }

    void Paint(GstVideoFrame& frame, quint32 number);

private:
    void ChooseScene(const TestPictureState::Properties& properties);

    GstVideoInfo m_info = {};
    std::shared_ptr<const TestPictureScene> m_scene;
    int m_sceneGeneration = 0;
    double m_path = 0;
};

#pragma once

#include "frame/WorkThread.h"
#include "platform/gstreamer/devices/VideoMode.h"
#include "platform/gstreamer/live/LiveSession.h"
#include "platform/gstreamer/live/LiveView.h"
#include "platform/gstreamer/movies/MovieRecorder.h"
#include "platform/gstreamer/VideoControl.h"

/// What runs behind a video control.
struct VideoControl::Live
{
    // The media library takes its time at its first use, which is not to be the operator's.
    WorkThread preparation;
    bool isPrepared = false; ///< Or about to be.
    LiveSession session;
    LiveView view;
    LiveSession::State shownState = LiveSession::State::Idle;
    int runningDevice = -1; ///< Positions that the session was started with.
    int runningFormat = -1;
    int runningInput = -1;
    int goodDevice = -1; ///< Those that last gave a picture.
    int goodFormat = -1;
    QTimer formatPatience;
    int toldFrames = 0; ///< The count of the last frame event.
    int telling = 0;    ///< Frame events that are being handled, one inside the other.
    StreamChoice choice;
    std::shared_ptr<MovieRecorder> recorder; ///< While a movie is written.
};

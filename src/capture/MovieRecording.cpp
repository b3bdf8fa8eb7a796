#include "capture/MovieRecording.h"

#include "capture/device_link.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "contracts/VideoCap.h"
#include "filing/capture_folders.h"
#include "filing/MovieFiling.h"
#include "frame/file_calls.h"
#include "frame/services.h"
#include "frame/waiting.h"
#include "session/VisitContext.h"
#include "visit/Visit.h"

#include <QLabel>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace {
/// A file of about 139 seconds.
constexpr int MostFrames = 2500;
constexpr int SharePatienceMs = 1000;
constexpr int MovieWidth = 320;
constexpr int MovieHeight = 240;
constexpr int FramesPerSecond = 18;
} // namespace

void PrepareMovieCapture(VideoCap& capture, const QString& path)
{
    capture.setCaptureFileName(path);
    capture.setUseCustomVideoFormat(true);
    capture.setCustomVideoWidth(MovieWidth);
    capture.setCustomVideoHeight(MovieHeight);
    capture.setFrameRate(FramesPerSecond);
    capture.setCaptureAudio(true);
    capture.setCaptureVideo(true);
    capture.setCaptureMode(true);
}

MovieRecording::MovieRecording(VideoCap& capture, MovieFiling& filing, QLabel& lblMovie, QLabel& lblMovieStatus)
    : m_capture(capture), m_filing(filing), m_lblMovie(lblMovie), m_lblMovieStatus(lblMovieStatus)
{
}

void MovieRecording::Begin()
{
    const int command = ++m_command;
    // What can't be recorded must not cost the earlier recording.
    if (m_capture.HoldFrame() == nullptr)
        throw PlatformError(u"캡쳐할 영상이 없습니다.!!"_s);
    if (!m_capture.HasRoomForMovie(LocalFolder()))
        throw PlatformError(u"이 컴퓨터의 남은 공간이 부족하여 동영상을 저장할수 없습니다.!!"_s);
    CheckShare();
    m_lblMovie.setText(u"동영상 저장중..."_s);
    {
        m_isBeginning = true;
        const auto begun = qScopeGuard([this] { m_isBeginning = false; });
        PumpEvents();
    }
    if (command != m_command)
        return;
    try {
        StartMovieRecording();
    } catch (const PlatformError&) {
        m_capture.setCaptureMode(false);
        ShowNoRecording();
        throw;
    }
}

void MovieRecording::CheckShare()
{
    // One that doesn't answer takes the movie later.
    if (m_filing.IsAway() || filecalls::AnyHeld())
        return;
    const QString folder = MovieFolder(VisitContext.CaptureDir);
    // The same for one that is found to stand still now.
    const waiting::Patience patience(SharePatienceMs);
    try {
        EnsureFolderOfYear(VisitContext.CaptureDir, folder);
        if (m_capture.HasRoomForMovie(folder))
            return;
    } catch (const FilesAway&) {
        return;
    }
    throw PlatformError(u"캡쳐 디렉토리의 남은 공간이 부족하여 동영상을 저장할수 없습니다.!!"_s);
}

void MovieRecording::StartMovieRecording()
{
    // One that still runs counts as an earlier one.
    if (m_capture.CaptureMode())
        m_capture.setCaptureMode(false);
    m_movieBase = m_filing.Begin(CurrentVisit());
    const auto begun = qScopeGuard([this] { m_filing.HasBegun(); });
    m_movieSegment = 1;
    PrepareMovieCapture(m_capture, MoviePath(m_movieBase, m_movieSegment));
    m_capture.Start();
}

void MovieRecording::End()
{
    const int command = ++m_command;
    m_lblMovie.setText(u"동영상 저장완료..."_s);
    m_lblMovieStatus.clear();
    PumpEvents();
    if (command != m_command)
        return;
    const auto done = qScopeGuard([this] { ShowNoRecording(); });
    m_capture.setCompleteMovie(true);
    m_capture.setCaptureMode(false);
    m_capture.setKeepMovieFormat(false);
    m_capture.Stop();
    m_filing.Look();
    StartDevice(m_capture);
}

void MovieRecording::ForgetCutOff()
{
    if (!m_capture.CaptureMode() && !m_isBeginning)
        ShowNoRecording();
}

void MovieRecording::OnFrame(int frames)
{
    if (m_capture.CaptureMode()) {
        m_lblMovieStatus.setText(u"%1 Frame Processed"_s.arg(frames));
        if (frames > MostFrames && !m_isChangingFile)
            StartNextSegment();
    }
    if (m_isServingEvents)
        return;
    m_isServingEvents = true;
    const auto served = qScopeGuard([this] { m_isServingEvents = false; });
    PumpEvents();
}

void MovieRecording::StartNextSegment()
{
    m_isChangingFile = true;
    const auto changed = qScopeGuard([this] { m_isChangingFile = false; });
    ++m_movieSegment;
    try {
        PrepareMovieCapture(m_capture, MoviePath(m_movieBase, m_movieSegment));
        m_capture.Start();
    } catch (const PlatformError&) {
        m_capture.setCaptureMode(false);
        ShowNoRecording();
        throw;
    }
}

void MovieRecording::GoOnAfterSleep()
{
    m_capture.Reopen();
    if (m_capture.CaptureMode() && !m_isChangingFile)
        StartNextSegment();
}

void MovieRecording::OnMovieFault(const QString& reason)
{
    ++m_command;
    ShowNoRecording();
    throw PlatformError(reason);
}

void MovieRecording::ShowNoRecording()
{
    m_lblMovie.clear();
    m_lblMovieStatus.clear();
}

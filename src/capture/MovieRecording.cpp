#include "capture/MovieRecording.h"

#include "capture/device_link.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "contracts/VideoCap.h"
#include "filing/capture_folders.h"
#include "frame/services.h"
#include "visit/Visit.h"
#include "visit/VisitContext.h"

#include <QLabel>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace {
/// A file of about 139 seconds.
constexpr int MostFrames = 2500;
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

MovieRecording::MovieRecording(VideoCap& capture, QLabel& lblMovie, QLabel& lblMovieStatus)
    : m_capture(capture), m_lblMovie(lblMovie), m_lblMovieStatus(lblMovieStatus)
{
}

void MovieRecording::Begin()
{
    const int command = ++m_command;
    // What can't be recorded must not cost the earlier recording.
    if (m_capture.HoldFrame() == nullptr)
        throw PlatformError(u"캡쳐할 영상이 없습니다.!!"_s);
    const QString folder = MovieFolder(VisitContext.CaptureDir);
    EnsureFolderOfYear(VisitContext.CaptureDir, folder);
    if (!m_capture.HasRoomForMovie(folder))
        throw PlatformError(u"캡쳐 디렉토리의 남은 공간이 부족하여 동영상을 저장할수 없습니다.!!"_s);
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

void MovieRecording::StartMovieRecording()
{
    // The files of a recording that still runs can only go once they are closed.
    if (m_capture.CaptureMode())
        m_capture.setCaptureMode(false);
    m_movieBase = CurrentVisit().MovieStem();
    DeleteEarlierMovies();
    m_movieSegment = 1;
    PrepareMovieCapture(m_capture, MoviePath(m_movieBase, m_movieSegment));
    m_capture.Start();
}

void MovieRecording::DeleteEarlierMovies() const
{
    const QString folder = MovieFolder(VisitContext.CaptureDir);
    for (const QString& name : Files().FilesStartingWith(folder, m_movieBase.mid(folder.size()))) {
        if (name.endsWith(u".avi", Qt::CaseInsensitive))
            DeleteFile(folder + name);
    }
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

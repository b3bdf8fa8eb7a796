#pragma once

#include <QObject>
#include <QString>

class MovieFiling;
class QLabel;
class VideoCap;

/// The movie of a visit: a recording in numbered files of bounded length, one for all sections.
class MovieRecording : public QObject
{
    Q_OBJECT

public:
    MovieRecording(VideoCap& capture, MovieFiling& filing, QLabel& lblMovie, QLabel& lblMovieStatus);

    /// Records a movie in the place of the visit's earlier ones. Throws PlatformError without a live picture, and when
    /// the movie can't be written; nothing is then recorded, and the earlier ones stay.
    void Begin();
    /// Ends the recording and shows the live picture under its stored format again.
    void End();
    /// The device is connected again: what a recording that was cut off has left on the labels goes. One that runs
    /// keeps them.
    void ForgetCutOff();
    /// The machine has slept: the device is opened anew, and a recording goes on in its next file.
    void GoOnAfterSleep();
    /// A frame event of the control.
    void OnFrame(int frames);
    /// The control has ended the recording by itself. Throws PlatformError with the reason.
    void OnMovieFault(const QString& reason);

private:
    /// Throws PlatformError when the share answers, and has no folder or no room.
    void CheckShare();
    void StartMovieRecording();
    void StartNextSegment();
    void ShowNoRecording();

    VideoCap& m_capture;
    MovieFiling& m_filing;
    QLabel& m_lblMovie;
    QLabel& m_lblMovieStatus;
    QString m_movieBase;
    int m_movieSegment = 0;
    int m_command = 0; ///< Grows with each command: one that comes while events are served ends the older one.
    bool m_isBeginning = false;
    bool m_isChangingFile = false;
    bool m_isServingEvents = false;
};

/// Sets what the movie is to be like, and where it goes.
void PrepareMovieCapture(VideoCap& capture, const QString& path);

#pragma once

#include <QObject>
#include <QTimer>

class MovieFiling;
class NoticeStrip;
class StillFiling;

/// What the strip says of filing: database, share, room, movies, and the capture root.
class FilingNotices : public QObject
{
    Q_OBJECT

public:
    FilingNotices(NoticeStrip& strip, StillFiling& filing, MovieFiling& movies);

private:
    void ShowOutage();
    void ShowMovies();
    void ShowRoot();
    /// On the share's own thread, so that one that hangs isn't asked twice.
    void AskForRoom();
    void ShowRoom(qint64 freeBytes);

    NoticeStrip& m_strip;
    StillFiling& m_filing;
    MovieFiling& m_movies;
    QTimer m_roomTimer;
    bool m_isAskingForRoom = false;
};

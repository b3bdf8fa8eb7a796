#pragma once

#include <QObject>

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

    NoticeStrip& m_strip;
    StillFiling& m_filing;
    MovieFiling& m_movies;
};

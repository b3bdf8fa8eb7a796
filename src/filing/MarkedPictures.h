#pragma once

#include "filing/PictureJournal.h"
#include "frame/WorkThread.h"

#include <QObject>
#include <QTimer>

/// Brings the sums of pictures that the editor has replaced, and of movies, into the table, behind their files and
/// without anybody waiting for it: they stand in the journal until they are there. Whoever writes a picture's file last
/// has its sum there last, whichever station it is.
class MarkedPictures : public QObject
{
    Q_OBJECT

public:
    /// Goes on with what the journal holds.
    explicit MarkedPictures(PictureJournal& journal);

    /// The picture's file has become another. `version` is that of the file that was written.
    void Add(const Visit& visit, int number, const PictureSum& sum, const QByteArray& version);
    /// A movie's file has come to the share, or, without a version, it has gone from there.
    void AddMovie(const Visit& visit, int number, const PictureSum& sum, const QByteArray& version);
    bool IsAtRest() const { return m_journal.Marked().isEmpty(); }

private:
    void Store(const MarkedJob& job);
    void Submit(const MarkedJob& job);

    PictureJournal& m_journal;
    QTimer m_retry;
};

/// The same for a program that files nothing: with a journal of its own, which a later station takes over when
/// something is left.
class MarkedPicturesAlone
{
public:
    MarkedPicturesAlone();
    ~MarkedPicturesAlone();
    MarkedPicturesAlone(const MarkedPicturesAlone&) = delete;
    MarkedPicturesAlone& operator=(const MarkedPicturesAlone&) = delete;

    MarkedPictures& Marked() { return m_pictures; }

private:
    WorkThread m_writer;
    PictureJournal m_journal;
    MarkedPictures m_pictures;
};

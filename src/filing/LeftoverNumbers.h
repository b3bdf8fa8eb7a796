#pragma once

#include "filing/PictureJournal.h"
#include "frame/WorkThread.h"
#include "visit/Visit.h"

#include <QObject>

/// A number that a dead station of this machine was filing: its claim stands, and its picture too.
struct LeftoverNumber
{
    Visit visit;
    int number = 0;
    QString picture{}; ///< Identity of the picture, as the claim tells it.
};

/// Looks for the numbers that dead stations of this machine were filing, and clears away what else they left: claims
/// without a picture, and files that were half written. Works on a thread of its own, file by file; the database isn't
/// asked.
class LeftoverNumbers : public QObject
{
    Q_OBJECT

public:
    /// Begins to look in these sections' folders. `Found` follows once.
    void LookIn(const QList<PictureJournal::Folder>& folders);
    /// Looks, and returns when that is done.
    static QList<LeftoverNumber> FindIn(const QList<PictureJournal::Folder>& folders);

Q_SIGNALS:
    void Found(const QList<LeftoverNumber>& numbers);

private:
    WorkThread m_thread;
};

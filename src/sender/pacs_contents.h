#pragma once

#include "pacs/PacsLine.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <memory>

class DicomLook;

/// What an entry of the queue sends, as the sender finds it; to be asked on a thread that may block.
struct PacsContent
{
    enum Kind {
        Read,
        Gone,  ///< There is no such picture.
        Other, ///< Something else stands there.
        Away,  ///< The file, or the share that it lies in, can't be read for the time being.
        Raw,   ///< A movie is still, or again, to be made ready.
    };

    Kind kind = Away;
    QByteArray bytes = {};    ///< Of a movie none; of a search the deleted picture.
    QByteArray original = {}; ///< The picture as it was before it was marked up; empty when none is kept.
    QDateTime takenAt = {};   ///< Local time.
    QString reason = {};      ///< Why it can't be read.
    std::shared_ptr<const DicomLook> look = {}; ///< At the bytes of a picture; null without one.
};

/// `identities` are those that the table has of the picture. Never throws.
PacsContent ReadPacsContent(const PacsEntry& entry, const Visit& visit, const QStringList& identities);

/// The visit's movie of that entry, on the share.
QString MovieSource(const PacsEntry& entry, const Visit& visit);

#pragma once

#include <QString>

/// The visit that a picture or a note belongs to, as it stood when the operator asked for it: the section may have been
/// changed by the time the work is done.
struct CaptureVisit
{
    QString chart;
    QString yuhyung;
    QString jinchal;
    QString ymd;
    QString etc;
    QString captureDir;
    QString imageExt;
    QString extra;

    /// The visit as it stands now.
    static CaptureVisit Current();

    bool operator==(const CaptureVisit&) const = default;
};

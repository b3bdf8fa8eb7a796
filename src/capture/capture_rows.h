#pragma once

#include "capture/CaptureVisit.h"

/// The rows of the visit that the station writes. A failing statement is a PlatformError.

/// A note as it is stored: cleaned, as many characters long as it was typed.
QString NoteForStore(const QString& typed);

/// Full path of one of the visit's pictures.
QString VisitPicturePath(const CaptureVisit& visit, int number);

/// True when the picture has a `cap` row.
bool HasPictureRow(const CaptureVisit& visit, int number);

/// Writes the `ca` row with the note, then the `cap` row of a picture.
void SaveCaptureRows(const CaptureVisit& visit, int number, const QString& note);

/// Stores the note in the visit's row; a visit without a row stays without one.
void UpdateVisitNote(const CaptureVisit& visit, const QString& note);

/// True when the clinic's table for the capture mark is `yk`; it is `endo` otherwise.
bool MarksInYk();
/// Sets the capture mark of the visit in the clinic's table, "1" or "0". A clinic without a matching row gets none.
void MarkVisitCaptured(const CaptureVisit& visit, const QString& mark);

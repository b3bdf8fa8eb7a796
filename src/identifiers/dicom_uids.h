#pragma once

#include "contracts/dicom.h"

#include <optional>

/// Identifiers of a picture in other systems, of at most 64 characters, derived from what it is: a repeat has the same.

/// The identity's own, else one study for institution, chart, date and section.
QString StudyUid(const DicomPicture& picture);
/// A study's objects of one modality stand in a series of their own.
enum class DicomSeries { Images, Reports, Movies, Rejections };
QString SeriesUid(const DicomPicture& picture, DicomSeries series = DicomSeries::Images);
/// The picture by its number and its file's content: a marked-up picture is another one.
QString InstanceUid(const DicomPicture& picture, const QByteArray& content);
/// Any other object of the visit, by its series and what it is made of.
QString InstanceUid(const DicomPicture& facts, DicomSeries series, const QByteArray& content);

/// Instance number of the picture with that number once it has been marked up so often, counted from 1: above those of
/// all pictures of the visit.
int InstanceOfMarking(int number, int times);

/// Class of the objects that such pictures become.
QString ClassUidOf(DicomModality modality);
/// Of reports, movies and rejections, and of the pictures of an endoscope.
QString ClassUidOf(DicomSeries series);
/// Where objects of that class stand.
DicomSeries SeriesOfClass(const QString& classUid);
/// "ES", as an object and the station's tables have it.
QString WordOf(DicomModality modality);
/// Nothing for a word that is none.
std::optional<DicomModality> ModalityOf(const QString& word);

/// One that nothing else has, under the root, or under `2.25` without one.
QString NewUid(const QString& root);
/// True for an identifier as the standard has them.
bool IsUid(const QString& uid);
/// True for a root that leaves room behind it: digits and points, at most 24 characters, no component that begins with
/// a needless 0.
bool IsUidRoot(const QString& root);

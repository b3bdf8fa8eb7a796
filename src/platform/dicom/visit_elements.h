#pragma once

#include "identifiers/dicom_uids.h"
#include "platform/dicom/Dataset.h"

#include <functional>

/// What an object consists of, but for its coded data and the file's meta information.
struct ObjectElements
{
    QList<DicomElement> elements;
    /// In Unicode, as some letter isn't in the character set that was wanted.
    bool isOtherSet = false;
};

/// What tells an object of a visit from its others.
struct ObjectHead
{
    DicomReference self;
    DicomSeries series = DicomSeries::Images;
    QString modality;
    QDateTime at; ///< Of its content, local time.
    int instance = 1;
};

/// Made by `fill` in the character set that is wanted, else in Unicode.
ObjectElements InWantedSet(DicomCharacters wanted, const std::function<void(Dataset&)>& fill);

/// Whose the visit is.
void AddPatient(Dataset& data, const DicomPicture& facts);

/// What every object of a visit tells: patient, study with its order, series, station, its own identifiers and time.
void AddVisit(Dataset& data, const DicomPicture& facts, const ObjectHead& head);
/// What the series has been ordered as; nothing without an order.
void AddRequest(Dataset& data, const DicomPicture& facts);
/// What a series of pictures shows, as far as it is known. `isToldElsewhere`: the object names a region of the body.
void AddBodyPart(Dataset& data, const DicomPicture& facts, bool isToldElsewhere);
/// When what an object shows was taken.
void AddAcquisition(Dataset& data, const QDateTime& at);

/// `yyyyMMdd` and `HHmmss`; empty without a time.
QString DateOf(const QDateTime& at);
QString TimeOf(const QDateTime& at);
/// `HHmmss` of a text that begins so; empty for any other.
QString DicomTime(const QString& time);

#pragma once

#include <QString>

/// Patient and insurance data of the visit, as far as the station reads them. All texts, trimmed. A look-up that finds
/// nobody leaves the record as it was.
struct PatientRecordFields
{
    QString Chart, Yuhyung, Saupkiho, Saupmyung, Suname, Jumin, Tel, Post, Bunji, Gongje, Fymd, Lymd, Jinchal, Xray;
    QString Ibdc, Wedc; ///< Discount rates, whole per cent from "0" to "100".
    QString Mansung, Kwamok, Chamgo, Chymd, Piboname, Pibojumin, Kwange;
    QString Jongbl; ///< Kind of medical aid, without leading zeros.
    QString Jungno, Upchemyung, Sungkiho, Sagoymd, Okymd, Etc1;
};

extern PatientRecordFields PatientRecord;

/// Reads the patient and the insurance row that applies on the date, and checks them. The verdict is empty when all is
/// well, otherwise a code and a blank before the message: "N" nobody found, "Y" something to correct.
QString LookupPatient(const QString& chart, const QString& yuhyung, PatientRecordFields& patient, const QString& ymd);

/// True when the clinic has a patient of that chart, whatever else it knows of him.
bool HasPatientRow(const QString& chart);

/// Place name and house number of a patient; empty for a post code that isn't known.
QString AddressText(const PatientRecordFields& patient);

/// Age on a date `yyyymmdd` from a resident number: three digits of years, a blank, the months. "000 00" for a number
/// that isn't numeric; empty for a date that is none.
QString AgeText(const QString& ymd, const QString& jumin);

/// "M" or "F" by the seventh character of a resident number.
QString SexText(const QString& jumin);

/// Date of birth `yyyymmdd` by the first seven digits of a resident number; empty for a number without them, or with
/// none that is a date.
QString BirthText(const QString& jumin);
